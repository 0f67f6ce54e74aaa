"""What makes a page usable by everybody, as scripts that run in it and return what is wrong."""

# Inputs that have no label, buttons and links without a name, pictures without an alternative.
UNLABELLED = """
    const wrong = [];
    for (const input of document.querySelectorAll("input, select, textarea")) {
        if (input.labels.length === 0 && !input.getAttribute("aria-label")) wrong.push("input " + input.id);
    }
    for (const part of document.querySelectorAll("a, button, summary")) {
        if (part.textContent.trim() === "" && !part.getAttribute("aria-label")) wrong.push("nameless " + part.outerHTML);
    }
    for (const picture of document.querySelectorAll("svg")) {
        if (picture.getAttribute("aria-hidden") === "true") continue;
        if (picture.getAttribute("role") !== "img" || !picture.querySelector("title")) wrong.push("svg without title");
    }
    if (document.querySelectorAll("h1").length !== 1) wrong.push("not one h1");
    if (!document.documentElement.lang) wrong.push("no language");
    return wrong;"""

# Texts whose contrast with what lies behind them is below 4.5, one for each style.
CONTRASTS = """
    const channel = (value) => value <= 10.31 ? value / 3294.6 : Math.pow((value / 255 + 0.055) / 1.055, 2.4);
    const numbers = (color) => color.match(/[0-9.]+/g).map(Number);
    const light = ([r, g, b]) => 0.2126 * channel(r) + 0.7152 * channel(g) + 0.0722 * channel(b);
    const behind = (node) => {
        for (; node; node = node.parentElement) {
            const color = numbers(getComputedStyle(node).backgroundColor);
            if (color.length === 3 || color[3] === 1) return color;
        }
        return [255, 255, 255];
    };
    const wrong = new Set();
    for (const node of document.querySelectorAll("body *")) {
        const hasText = [...node.childNodes].some((child) => child.nodeType === 3 && child.data.trim() !== "");
        if (!hasText || node.offsetParent === null || node.disabled) continue;
        const [a, b] = [light(numbers(getComputedStyle(node).color)), light(behind(node))].sort((x, y) => y - x);
        const ratio = (a + 0.05) / (b + 0.05);
        if (ratio < 4.5) wrong.add(`${node.tagName}.${node.className}: ${ratio.toFixed(2)}`);
    }
    return [...wrong];"""
