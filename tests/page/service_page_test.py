"""The service page in a real browser: WEB_ADDRESS STANDIN_URL STANDIN_LOG OUTPUT_DIRECTORY, see script/page-test."""

import re
import subprocess
import sys
import unittest
import urllib.request

from browser import Browser
from looks import CONTRASTS, UNLABELLED

WEB, STANDIN, STANDIN_LOG, OUTPUT = sys.argv[1:5]
PAGE = WEB + "/quorbel.html"

FILL = """
    const form = document.querySelector(`form[data-method=${arguments[0]}]`);
    form.closest("details").open = true;
    for (const [element, value] of Object.entries(arguments[1])) {
        const input = form.querySelector(`[data-element=${element}]`);
        input.value = value;
        input.dispatchEvent(new Event("input", {bubbles: true}));
    }
    return form.querySelector(".envelope").value;"""
SEND = """
    const form = document.querySelector(`form[data-method=${arguments[0]}]`);
    form.querySelector(".result").hidden = true;
    form.requestSubmit();"""
RESULT = """
    const result = document.querySelector(`form[data-method=${arguments[0]}] .result`);
    return result.hidden ? null : {kind: result.querySelector(".outcome").className, text: result.innerText};"""


def commands():
    """What the stand-in was told, one text for each post."""
    with open(STANDIN_LOG, encoding="utf-8", errors="replace") as file:
        return file.read()


class ServicePage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser(OUTPUT + "/profile"))

    def setUp(self):
        self.browser.open("about:blank")
        self.browser.open(PAGE)

    def tearDown(self):
        entries = [entry for entry in self.browser.log("browser") if entry["level"] in ("WARNING", "SEVERE")]
        self.assertEqual(entries, [], "the console has errors")
        strangers = [url for url in self.browser.requested_urls() if not url.startswith((WEB + "/", "data:", "about:", "chrome:"))]
        self.assertEqual(strangers, [], "the page asked another host")

    def send(self, method, **values):
        self.browser.run(FILL, method, values)
        self.browser.run(SEND, method)
        return self.browser.wait(RESULT, method)

    def test_sends_what_the_curl_line_sends(self):
        before = commands()
        values = {"szURL": STANDIN, "szRecipientName": "night", "szSubject": "R&D <1>", "szMessage": "it's\n<hot> & \"loud\""}
        result = self.send("SendStdMessage", **values)
        self.assertIn("good", result["kind"])
        self.assertIn("The paging server answered.", result["text"])
        by_form = commands()[len(before):]
        self.assertIn("R&D <1>", by_form, "a value with special characters arrives whole")

        line = self.browser.run("return document.querySelector('form[data-method=SendStdMessage] .curl').textContent")
        subprocess.run(["sh", "-c", line], check=True, capture_output=True, timeout=30)
        by_curl = commands()[len(before) + len(by_form):]
        self.assertEqual(without_numbers(by_form), without_numbers(by_curl))

    def test_tells_a_refusal_and_a_dead_server(self):
        administrator = {"szURL": STANDIN, "szAdminName": "admin", "szAdminPassword": "secret"}
        refused = self.send("AddUser", **administrator, szUserName="u", szAuthen="card")
        self.assertIn("bad", refused["kind"])
        self.assertIn("Refused: Invalid authentication.", refused["text"])
        self.assertIn("Nothing was sent", refused["text"])

        dead = self.send("SendStdMessage", szURL="http://127.0.0.1:1/", szRecipientName="night", szMessage="m")
        self.assertIn("bad", dead["kind"])
        self.assertIn("The paging server did not answer: nothing was sent.", dead["text"])
        command = self.send("QueryGroup", **administrator | {"szURL": "http://127.0.0.1:1/"}, szGroupName="night")
        self.assertIn("The paging server did not answer: nothing was sent.", command["text"], "a fault 2012")
        unsure = self.send("SendStdMessage", szURL2="http://127.0.0.1:2/")
        self.assertIn("unsure", unsure["kind"], "why the first server failed is not told")

    def test_keeps_passwords_to_itself(self):
        envelope = self.browser.run(FILL, "QueryGroup", {"szURL": STANDIN, "szAdminPassword": "tops3cret"})
        self.assertNotIn("tops3cret", envelope)
        self.assertEqual(self.browser.run("return document.querySelectorAll('input[type=text][id$=Password]').length"), 0)
        self.send("QueryGroup", szAdminName="admin", szGroupName="night")
        stored = "return location.href + JSON.stringify([{...localStorage}, {...sessionStorage}, document.cookie])"
        self.assertEqual(self.browser.run(stored), PAGE + '[{},{},""]')

    def test_sends_repeated_items_in_order_and_leaves_out_empty_ones(self):
        envelope = self.browser.run(FILL, "SendStdMessage", {"szURL": "http://p/", "szResponse": "yes", "szFieldName": "area"})
        self.assertIn("<ResponseActionData><szResponse>yes</szResponse></ResponseActionData>"
                      "<CustomFieldData><szFieldName>area</szFieldName></CustomFieldData>", envelope)
        self.assertEqual(envelope.count("<CustomFieldData>"), 1)

    def test_every_sample_request_is_accepted(self):
        samples = self.browser.run("return [...document.querySelectorAll('article')].map("
                                   "(article) => [article.id, article.querySelector('.sample').textContent])")
        self.assertEqual(len(samples), 28)
        for method, sample in samples:
            body = re.sub(r"<szURL>[^<]*", "<szURL>" + STANDIN, sample).encode()
            request = urllib.request.Request(WEB + "/cgi-bin/quorbel-soap", body, {"Content-Type": "text/xml"})
            with urllib.request.urlopen(request, timeout=30) as answer:
                text = answer.read().decode()
            self.assertIn(f"<{method}Result>", text, f"{method}: {text}")

    def test_filters_methods_by_typing(self):
        self.browser.run("document.querySelector('#filter').focus()")
        self.browser.type_keys("carrier pin")
        shown = "return [...document.querySelectorAll('article:not([hidden])')].map((article) => article.id).sort()"
        self.assertEqual(self.browser.run(shown), ["AddReceiver", "SendQuickMessage"])
        self.assertEqual(self.browser.run("return document.querySelector('#found').textContent"), "2 of the methods")

    def test_can_be_used_by_everybody(self):
        for scheme, width in (("light", 1200), ("dark", 1200), ("light", 390), ("dark", 390)):
            self.browser.looks(scheme, width)
            self.browser.run("location.hash = '#SendStdMessage';"
                             "for (const d of document.querySelectorAll('#SendStdMessage details')) d.open = true;")
            self.assertEqual(self.browser.run(CONTRASTS), [], f"{scheme}: hard to read")
            self.assertLessEqual(self.browser.run("return document.documentElement.scrollWidth"), width, "scrolls sideways")
            self.browser.picture(f"{OUTPUT}/service-{scheme}-{width}.png")
        self.browser.looks("light", 1200, scale=0.5)
        self.browser.run("location.hash = '#SendQuickMessage'")
        self.browser.picture(f"{OUTPUT}/service-small.png")
        self.assertEqual(self.browser.run(UNLABELLED), [])
        order = "return document.querySelectorAll('[tabindex]:not([tabindex=\"0\"])').length"
        self.assertEqual(self.browser.run(order), 0, "the order of the text is the order of the keyboard")

    def test_is_guarded_by_a_strict_policy(self):
        with urllib.request.urlopen(PAGE, timeout=30) as answer:
            policy = answer.headers["Content-Security-Policy"]
        self.assertTrue(policy.startswith("default-src 'none';"), policy)
        self.assertNotIn("unsafe", policy)
        self.assertEqual(self.browser.run("return getComputedStyle(document.body).margin"), "0px", "the style is refused")


def without_numbers(text):
    return re.sub(r"[0-9]+", "N", text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
