"use strict";
// The filter box, the forms that try a method, and what their answers mean. Nothing is stored, and nothing is
// asked of any other host.

const namespaces = {
  envelope: "http://schemas.xmlsoap.org/soap/envelope/",
  service: document.body.dataset.namespace,
};
// The service on the host that this page came from.
const service = new URL(new URL(document.body.dataset.endpoint, location.href).pathname, location.href).href;

// What the page's tables of texts tell: each text, whether the paging server may have got the command, and what to do.
function textsOf(table) {
  return [...document.querySelectorAll(`[data-texts=${table}] tr`)].map((row) => (
    { text: row.cells[0].textContent, sent: row.dataset.sent, meaning: row.cells[1].textContent }));
}
const faults = textsOf("faults");
const failures = textsOf("failures");
const unknownFailure = { sent: "perhaps", meaning: "It may have been executed: query before you send it again." };

const mustBeReference = /[&<>]/;

function escaped(text) {
  return text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");
}

// A value as it arrives whole: in one CDATA section where an entity would cut it.
function valueText(value, keepsWhole) {
  if (!mustBeReference.test(value)) return value;
  return keepsWhole || value.includes("]]>") ? escaped(value) : `<![CDATA[${value}]]>`;
}

function warningFor(value, keepsWhole) {
  if (keepsWhole) return "";
  if (/[\r\n]/.test(value)) return "Only what stands behind the last line break arrives.";
  if (value.includes("]]>")) return "Only the last piece of this value arrives: it cannot be one CDATA section.";
  return "";
}

function elementText(input) {
  const value = input.value;
  if (value === "") return "";
  const name = input.dataset.element;
  return `<${name}>${valueText(value, input.dataset.whole === "yes")}</${name}>`;
}

// The form's parts stand in the order in which the elements are to be sent.
function methodText(form) {
  let text = "";
  for (const part of form.querySelectorAll("[data-element]")) {
    if (part.closest("[data-item]") && !part.matches("[data-item]")) continue;
    if (!part.matches("[data-item]")) {
      text += elementText(part);
      continue;
    }
    const members = [...part.querySelectorAll("[data-element]")].map(elementText).join("");
    if (members !== "") text += `<${part.dataset.element}>${members}</${part.dataset.element}>`;
  }
  return text;
}

function envelopeOf(form) {
  const method = form.dataset.method;
  return `<?xml version="1.0" encoding="utf-8"?><soap:Envelope xmlns:soap="${namespaces.envelope}"><soap:Body>` +
    `<${method} xmlns="${namespaces.service}">${methodText(form)}</${method}></soap:Body></soap:Envelope>`;
}

// Passwords are sent, not shown.
function shownEnvelope(form) {
  const secrets = [...form.querySelectorAll("input[type=password]")].filter((input) => input.value !== "");
  const values = secrets.map((input) => input.value);
  secrets.forEach((input) => { input.value = "********"; });
  const text = envelopeOf(form);
  secrets.forEach((input, i) => { input.value = values[i]; });
  return text;
}

function shellQuoted(text) {
  return "'" + text.replace(/'/g, "'\\''") + "'";
}

function show(form) {
  const envelope = shownEnvelope(form);
  form.querySelector(".envelope").value = envelope;
  form.querySelector(".curl").textContent = "curl -H 'Content-Type: text/xml; charset=utf-8' --data-binary " +
    `${shellQuoted(envelope)} ${shellQuoted(service)}`;
  for (const input of form.querySelectorAll("[data-element]")) {
    const warning = input.parentElement.querySelector(".warning");
    if (warning && input.value !== undefined) {
      warning.textContent = warningFor(input.value, input.dataset.whole === "yes");
    }
  }
}

function outcome(kind, headline, detail) {
  return { kind, headline, detail };
}

// A failure's words stand at the end, behind what had come of an answer.
function failureIn(text) {
  return failures.find((failure) => text.trim().endsWith(failure.text));
}

function meaningOfFailure(text, failure, hasSecondServer) {
  if (failure.sent === "perhaps") return outcome("unsure", "The paging server did not answer in full.", `${text}. ${failure.meaning}`);
  if (hasSecondServer) return outcome("unsure", "The second paging server did not answer.", `${text}. Why the first one failed is not told: query before you send again.`);
  return outcome("bad", "The paging server did not answer: nothing was sent.", `${text}. ${failure.meaning}`);
}

function meaningOfFault(text, hasSecondServer) {
  if (text.startsWith("2012 ")) return meaningOfFailure(text, failureIn(text) ?? unknownFailure, hasSecondServer);
  const known = faults.find((fault) => fault.text === text);
  return outcome("bad", `Refused: ${text.slice(5)}.`, `Nothing was sent to the paging server. ${known ? known.meaning : ""}`);
}

function meaningOfReply(text, hasSecondServer) {
  const failure = failureIn(text);
  return failure ? meaningOfFailure(text, failure, hasSecondServer) : outcome("good", "The paging server answered.", text);
}

function textOf(node, name) {
  const found = node.getElementsByTagNameNS("*", name)[0];
  return found ? found.textContent : null;
}

function meaningOf(answer, method, hasSecondServer) {
  const fault = textOf(answer, "faultstring");
  if (fault !== null) return meaningOfFault(fault, hasSecondServer);
  const message = textOf(answer, "szResponseMessage");
  const lines = [...answer.getElementsByTagNameNS("*", "string")].map((line) => line.textContent);
  const text = message === null ? textOf(answer, `${method}Result`) : [message, ...lines].join("\n");
  return text === null ? outcome("bad", "This is no answer of the service.", "") : meaningOfReply(text, hasSecondServer);
}

function formatted(node, depth) {
  const indent = "  ".repeat(depth);
  if (node.children.length === 0) return `${indent}<${node.nodeName}>${node.textContent}</${node.nodeName}>\n`;
  return `${indent}<${node.nodeName}>\n${[...node.children].map((child) => formatted(child, depth + 1)).join("")}` +
    `${indent}</${node.nodeName}>\n`;
}

function report(form, meaning, status, document) {
  const box = form.querySelector(".outcome");
  box.className = `outcome ${meaning.kind}`;
  box.querySelector("strong").textContent = meaning.headline;
  box.querySelector("span").textContent = meaning.detail;
  form.querySelector(".status").textContent = status;
  form.querySelector(".answer").textContent = document ? formatted(document.documentElement, 0) : "";
  form.querySelector(".result").hidden = false;
}

function reportAnswer(form, response, text, started) {
  const status = `HTTP ${response.status}, ${Math.round(performance.now() - started)} ms`;
  const answer = new DOMParser().parseFromString(text, "application/xml");
  if (text === "" || answer.querySelector("parsererror")) {
    const meaning = outcome("bad", "The web server did not hand on an answer of the service.", text.slice(0, 500));
    report(form, meaning, status, null);
  } else {
    const second = form.querySelector("[data-element=szURL2]");
    const hasSecondServer = second !== null && second.value !== "";
    report(form, meaningOf(answer, form.dataset.method, hasSecondServer), status, answer);
  }
}

async function send(form) {
  const button = form.querySelector("button.send");
  const started = performance.now();
  button.disabled = true;
  try {
    const headers = { "Content-Type": "text/xml; charset=utf-8" };
    const response = await fetch(service, { method: "POST", headers, body: envelopeOf(form), credentials: "same-origin" });
    reportAnswer(form, response, await response.text(), started);
  } catch (failure) {
    const meaning = outcome("bad", "The service cannot be reached from this browser.", String(failure));
    report(form, meaning, "no HTTP answer", null);
  } finally {
    button.disabled = false;
  }
}

for (const form of document.querySelectorAll("form[data-method]")) {
  form.addEventListener("input", () => show(form));
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    send(form);
  });
  form.closest("details").addEventListener("toggle", () => show(form));
}

function matches(article, words) {
  const text = article.dataset.words.toLowerCase();
  return words.every((word) => text.includes(word));
}

function filter(text) {
  const words = text.toLowerCase().split(/\s+/).filter((word) => word !== "");
  let count = 0;
  for (const article of document.querySelectorAll("article[data-words]")) {
    article.hidden = !matches(article, words);
    if (!article.hidden) ++count;
    document.querySelector(`nav a[href="#${article.id}"]`).parentElement.hidden = article.hidden;
  }
  document.querySelector("#found").textContent = words.length === 0 ? "" : `${count} of the methods`;
}

document.querySelector("#filter").addEventListener("input", (event) => filter(event.target.value));
for (const part of document.querySelectorAll(".with-script")) part.hidden = false;
