"""A headless browser over the WebDriver protocol, as much of it as the tests of pages need."""

import base64
import json
import subprocess
import time
import urllib.request

ARGUMENTS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync", "--window-size=1200,900",
]


class Browser:
    """One session with its own empty profile; ends with the `with` block."""

    def __init__(self, profile):
        self.profile = profile

    def __enter__(self):
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True)
        self.address = self._driver_address()
        options = {"args": ARGUMENTS + [f"--user-data-dir={self.profile}"], "perfLoggingPrefs": {"enableNetwork": True}}
        wanted = {"goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}
        answer = self._call("POST", "/session", {"capabilities": {"alwaysMatch": wanted}})
        self.session = "/session/" + answer["sessionId"]
        return self

    def __exit__(self, *_):
        try:
            self._call("DELETE", self.session)
        finally:
            self.driver.terminate()
            self.driver.wait(10)

    def _driver_address(self):
        for line in self.driver.stdout:
            if "started successfully on port" in line:
                return "http://127.0.0.1:" + line.rstrip(".\n").split()[-1]
        raise RuntimeError("chromedriver did not start")

    def _call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.address + path, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def open(self, url):
        self._call("POST", self.session + "/url", {"url": url})

    def run(self, script, *arguments):
        """What the script returns in the page; `arguments[0]` and so on are the arguments."""
        return self._call("POST", self.session + "/execute/sync", {"script": script, "args": list(arguments)})

    def wait(self, script, *arguments):
        """Waits up to 20 seconds for the script to return something true, which is the result."""
        for _ in range(200):
            value = self.run(script, *arguments)
            if value:
                return value
            time.sleep(0.1)
        raise AssertionError(f"still not true after 20 seconds: {script} {arguments}")

    def command(self, name, **parameters):
        """A command of the browser's own protocol."""
        return self._call("POST", self.session + "/goog/cdp/execute", {"cmd": name, "params": parameters})

    def log(self, kind):
        return self._call("POST", self.session + "/se/log", {"type": kind})

    def requested_urls(self):
        """What the pages asked for since the last call."""
        messages = [json.loads(entry["message"])["message"] for entry in self.log("performance")]
        return [m["params"]["request"]["url"] for m in messages if m["method"] == "Network.requestWillBeSent"]

    def type_keys(self, text):
        keys = [{"type": kind, "value": key} for key in text for kind in ("keyDown", "keyUp")]
        self._call("POST", self.session + "/actions", {"actions": [{"type": "key", "id": "keys", "actions": keys}]})

    def picture(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._call("GET", self.session + "/screenshot")))

    def looks(self, scheme, width, scale=1):
        """From now on as somebody sees it who prefers "light" or "dark", in a window of so many pixels; `scale` is that of
        pictures."""
        self.command("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=scale, mobile=False)
