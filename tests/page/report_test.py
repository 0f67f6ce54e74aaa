"""The deliveries report in a real browser: WEB_ADDRESS STANDIN_URL CVLOGS SITE OUTPUT_DIRECTORY, see script/page-test."""

import socket
import subprocess
import sys
import threading
import unittest
import urllib.request

from browser import Browser
from looks import CONTRASTS, UNLABELLED

WEB, STANDIN, CVLOGS, SITE, OUTPUT = sys.argv[1:6]
DEAD = "http://127.0.0.1:1/"


def send(url, recipient="night", url2=""):
    second = f"<szURL2>{url2}</szURL2>" if url2 else ""
    name = f"<szRecipientName><![CDATA[{recipient}]]></szRecipientName>" if recipient else ""
    body = f"<Envelope><SendStdMessage><szURL>{url}</szURL>{name}<szMessage>m</szMessage>{second}</SendStdMessage></Envelope>"
    request = urllib.request.Request(WEB + "/cgi-bin/quorbel-soap", body.encode(), {"Content-Type": "text/xml"})
    with urllib.request.urlopen(request, timeout=60) as answer:
        return answer.read().decode()


class SilentServer:
    """Takes one request and closes without an answer."""

    def __enter__(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.thread = threading.Thread(target=self._serve)
        self.thread.start()
        return f"http://127.0.0.1:{self.listener.getsockname()[1]}/"

    def _serve(self):
        connection, _ = self.listener.accept()
        connection.recv(65536)
        connection.close()

    def __exit__(self, *_):
        self.thread.join(30)
        self.listener.close()


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser(OUTPUT + "/report-profile"))
        for _ in range(3):
            send(STANDIN)
        send(DEAD, url2=STANDIN)
        send(DEAD)
        send(STANDIN, recipient="")
        send(STANDIN, recipient="<script>document.title='forged'</script>")
        with SilentServer() as url:
            send(url)
        cls.file = OUTPUT + "/report.html"
        subprocess.run([CVLOGS, "deliveries", "--config-dir", SITE + "/config", "--html", cls.file], check=True, timeout=60)
        cls.browser.open("file://" + cls.file)

    def text(self, selector):
        return self.browser.run("return [...document.querySelectorAll(arguments[0])].map((n) => n.textContent).join('|')", selector)

    def test_counts_every_outcome(self):
        tiles = self.text(".tiles li")
        for count in ("4answered|", "1answered by the second server", "1refused", "1unknown", "1not connected", "8requests"):
            self.assertIn(count, tiles)
        self.assertEqual(self.browser.run("return document.querySelectorAll('svg[role=img] g').length > 0"), True)

    def test_tells_servers_refusals_and_trouble_with_whole_entries(self):
        page = self.text("main")
        for words in ("2004 Missing recipient", "Server returned nothing", "Couldn't connect to server", "Missing recipient"):
            self.assertIn(words, page)
        rows = "return [...document.querySelectorAll('h2')].find((h) => h.textContent === 'Not simply delivered')"
        newest_first = self.browser.run(rows + ".nextElementSibling.querySelectorAll(':scope > table > tbody > tr > th')"
                                        ".values().map((n) => n.textContent).toArray()")
        self.assertEqual(newest_first, sorted(newest_first, reverse=True))
        self.assertEqual(len(newest_first), 4)

    def test_a_forged_name_is_a_text(self):
        self.assertEqual(self.browser.run("return document.title"), "Deliveries")
        self.assertIn("<script>document.title='forged'</script>", self.text("main"))
        self.assertEqual(self.browser.run("return document.scripts.length"), 0)

    def test_can_be_used_by_everybody(self):
        for scheme, width in (("light", 1200), ("dark", 1200), ("light", 390), ("dark", 390)):
            self.browser.looks(scheme, width)
            self.assertEqual(self.browser.run(CONTRASTS), [], f"{scheme}: hard to read")
            self.assertLessEqual(self.browser.run("return document.documentElement.scrollWidth"), width, "scrolls sideways")
            self.browser.picture(f"{OUTPUT}/report-{scheme}-{width}.png")
        self.browser.looks("light", 1200, scale=0.5)
        self.browser.picture(f"{OUTPUT}/report-small.png")
        self.assertEqual(self.browser.run(UNLABELLED), [])
        asked = [url for url in self.browser.requested_urls() if not url.startswith(("file:", "data:", "chrome:", "about:"))]
        self.assertEqual(asked, [], "the report asked a host")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
