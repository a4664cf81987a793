"""Headless Chromium, driven through its devtools protocol over two pipes."""

import base64
import fcntl
import json
import os
import subprocess

COMMAND = [
    "chromium", "--headless=new", "--no-sandbox", "--remote-debugging-pipe", "--disable-gpu", "--no-first-run",
    "--disable-dev-shm-usage", "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--hide-scrollbars", "--force-color-profile=srgb",
]


class Browser:
    """One page. What it complains of, in its console or elsewhere, is gathered in "complaints"."""

    def __init__(self, folder):
        (commands, ours_out), (ours_in, answers) = os.pipe(), os.pipe()
        # Chromium reads its commands from descriptor 3 and answers on 4.
        theirs = [fcntl.fcntl(descriptor, fcntl.F_DUPFD, 10) for descriptor in (commands, answers)]
        self.process = subprocess.Popen(
            ["bash", "-c", f'exec "$@" 3<&{theirs[0]} 4>&{theirs[1]}', "-", *COMMAND, f"--user-data-dir={folder}"],
            pass_fds=theirs, env={**os.environ, "HOME": folder}, stderr=subprocess.DEVNULL)
        for descriptor in (commands, answers, *theirs):
            os.close(descriptor)
        self.output, self.input = os.fdopen(ours_out, "wb"), os.fdopen(ours_in, "rb")
        self.received, self.events, self.complaints, self.number, self.session = b"", [], [], 0, None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(f"{domain}.enable")

    def close(self):
        self.output.close()
        self.input.close()
        self.process.terminate()
        self.process.wait(20)

    def receive(self):
        while b"\0" not in self.received:
            block = os.read(self.input.fileno(), 1 << 20)
            if not block:
                raise RuntimeError("Chromium has ended")
            self.received += block
        text, self.received = self.received.split(b"\0", 1)
        message = json.loads(text)
        if message.get("method") in ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded"):
            self.complaints.append(message["params"])
        if "method" in message:
            self.events.append(message["method"])
        return message

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        self.output.write(json.dumps(message).encode() + b"\0")
        self.output.flush()
        while True:
            answer = self.receive()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def evaluate(self, expression):
        answer = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"]["exception"].get("description", "script error"))
        return answer["result"].get("value")

    def show(self, file, width, height, scheme="light", media=""):
        """Loads a file as a screen of that size, or a printer, shows it."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=width < 500)
        self.call("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.events.clear()
        error = self.call("Page.navigate", url=f"file://{file}").get("errorText")
        if error:
            raise RuntimeError(f"{file}: {error}")
        while "Page.loadEventFired" not in self.events:
            self.receive()

    def photograph(self, file):
        """The whole page, as long as it is."""
        image = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True)
        with open(file, "wb") as output:
            output.write(base64.b64decode(image["data"]))

    def print(self, file):
        document = self.call("Page.printToPDF", preferCSSPageSize=True, printBackground=True)
        with open(file, "wb") as output:
            output.write(base64.b64decode(document["data"]))
