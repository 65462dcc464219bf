"""The gallery of `kalmor export --html` in a real browser: headless Chromium, driven over its
DevTools pipe, opens it at a desktop and a phone width. Every thumbnail must load; the cards must
be the design's pages in export order, each with the per-layer counts ezdxf finds in its file;
nothing may be fetched but files, reach the console, or be wider than the screen; names full of
markup and URL characters must show as written. Screenshots go to build/interop/gallery/."""

import base64
import collections
import json
import os
import pathlib
import select
import subprocess
import tempfile
import time
import unittest
import urllib.parse

import ezdxf

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("KALMOR_BUILD_DIR", SOURCE / "build"))
SCREENSHOTS = BUILD / "interop" / "gallery"
# Laid out this tall first, every lazy thumbnail is in view and loads; then the screen's height.
SCREENS = {"desktop": (1400, 1100, False), "phone": (390, 844, True)}
TALL = 12000
FOUND = """(() => ({
  title: document.querySelector("h1").textContent,
  broken: [...document.images].filter(i => !(i.complete && i.naturalWidth)).map(i => i.src),
  markup: document.querySelectorAll("script, b, i").length,
  overflow: document.documentElement.scrollWidth - innerWidth,
  tree: [...document.querySelectorAll("nav li")].map(li => li.textContent),
  cards: [...document.querySelectorAll("li.page")].map(card => [
    card.closest("section").querySelector("h2 bdi").textContent,
    card.querySelector("h3 bdi").textContent, card.querySelector(".file a").href,
    Object.fromEntries([...card.querySelectorAll(".layers li:not(.total)")]
      .map(li => [li.textContent.match(/^[A-Z]+/)[0], +li.querySelector("data").value]))]),
}))()"""


class Browser:
    """Chromium reading DevTools commands on descriptor 3 and answering on 4, NUL-ended JSON."""

    def __init__(self, profile):
        to_browser, self.commands = os.pipe()
        self.answers, from_browser = os.pipe()

        def plumb():
            os.dup2(os.dup(to_browser), 3)
            os.dup2(os.dup(from_browser), 4)

        self.process = subprocess.Popen(
            ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--hide-scrollbars", f"--user-data-dir={profile}",
             "--remote-debugging-pipe"], close_fds=False, preexec_fn=plumb,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=dict(os.environ, HOME=profile))
        os.close(to_browser)
        os.close(from_browser)
        self.pending, self.sent, self.events = b"", 0, []

    def read(self, deadline):
        while b"\0" not in self.pending:
            if not select.select([self.answers], [], [], max(0, deadline - time.time()))[0]:
                raise TimeoutError("the browser stopped answering")
            chunk = os.read(self.answers, 1 << 20)
            if not chunk:
                raise EOFError("the browser has gone")
            self.pending += chunk
        message, self.pending = self.pending.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, session=None, **params):
        self.sent += 1
        message = {"id": self.sent, "method": method, "params": params}
        message.update({"sessionId": session} if session else {})
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        deadline = time.time() + 30
        while (answer := self.read(deadline)).get("id") != self.sent:
            self.events.append(answer)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']}")
        return answer["result"]

    def evaluate(self, session, expression):
        return self.call("Runtime.evaluate", session, expression=expression,
                         returnByValue=True)["result"]["value"]

    def show(self, url, screen, picture):
        """Opens `url` on a screen and saves its screenshot; returns what the page holds, the
        console's complaints and any address fetched that is not a file."""
        width, height, phone = SCREENS[screen]
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable", session)
        self.call("Emulation.setDeviceMetricsOverride", session, width=width, height=TALL,
                  deviceScaleFactor=1, mobile=phone)
        self.events.clear()
        self.call("Page.navigate", session, url=url)
        deadline = time.time() + 30
        while not (any(e.get("method") == "Page.loadEventFired" for e in self.events)
                   and self.evaluate(session, "[...document.images].every(i => i.complete)")):
            self.events.append(self.read(deadline))
        found = self.evaluate(session, FOUND)
        self.call("Emulation.setDeviceMetricsOverride", session, width=width, height=height,
                  deviceScaleFactor=1, mobile=phone)
        shot = self.call("Page.captureScreenshot", session, format="png")["data"]
        picture.write_bytes(base64.b64decode(shot))
        self.call("Target.closeTarget", targetId=target)
        complaints = [e["params"] for e in self.events if e.get("method") in (
            "Runtime.exceptionThrown", "Log.entryAdded", "Runtime.consoleAPICalled")]
        fetched = [e["params"]["request"]["url"] for e in self.events
                   if e.get("method") == "Network.requestWillBeSent"]
        return found, complaints, [url for url in fetched if not url.startswith("file://")]

    def close(self):
        try:
            self.call("Browser.close")
            self.process.wait(10)
        except (OSError, EOFError, TimeoutError, subprocess.TimeoutExpired):
            self.process.kill()


def export_order(document):
    """(schematic, page) as an export writes them: the schematics the hierarchy reaches from the
    root, first reached first, then the others in document order."""
    schematics = {s["name"]: s for s in document["schematics"]}
    reached = []

    def walk(schematic):
        for part in (p for page in schematic["pages"] for p in page.get("parts", [])):
            if part.get("kind") == "block":
                if part["schematic"] not in reached:
                    reached.append(part["schematic"])
                walk(schematics[part["schematic"]])

    walk(schematics[document.get("root", document["schematics"][0]["name"])])
    names = reached + [name for name in schematics if name not in reached]
    return [[name, page["name"]] for name in names for page in schematics[name]["pages"]]


class Gallery(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kalmor-gallery-"))
        SCREENSHOTS.mkdir(parents=True, exist_ok=True)
        cls.browser = Browser(str(cls.folder / "profile"))
        cls.addClassCleanup(cls.browser.close)

    def check_gallery(self, design, document, *options):
        """Exports `design` with its gallery and checks the gallery on every screen; returns
        the texts of its hierarchy or contents."""
        stem = self.folder / design.stem
        result = subprocess.run([BUILD / "src" / "kalmor", "export", design, "-o", f"{stem}.dxf",
                                 "--html", *options], capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        for screen in SCREENS:
            with self.subTest(design=design.name, screen=screen):
                found, complaints, foreign = self.browser.show(
                    stem.with_suffix(".html").as_uri(), screen,
                    SCREENSHOTS / f"{design.stem}_{screen}.png")
                self.assertEqual((complaints, foreign, found["broken"]), ([], [], []))
                self.assertEqual(found["title"], document["name"])
                self.assertEqual(found["markup"], 0, "markup in a name became elements")
                self.assertLessEqual(found["overflow"], 0, "wider than the screen")
                self.assertEqual([card[:2] for card in found["cards"]], export_order(document))
                for _, _, url, layers in found["cards"]:
                    dxf = ezdxf.readfile(urllib.parse.unquote(urllib.parse.urlparse(url).path))
                    counts = collections.Counter(e.dxf.layer for e in dxf.modelspace())
                    self.assertEqual({layer: n for layer, n in layers.items() if n}, counts, url)
        return found["tree"]

    def test_example_galleries(self):
        for design in sorted((SOURCE / "examples").glob("*.json")):
            tree = self.check_gallery(design, json.loads(design.read_text()))
            if design.name == "board.json":
                self.assertEqual(tree, ["MAIN (top): MCU · INTERFACE", "CH_A → CHANNEL: GAIN",
                                        "CH_B → CHANNEL: drawn once, as placed at /CH_A"])

    def test_names_show_as_written_and_files_open(self):
        document = json.loads((SOURCE / "examples" / "tiny.json").read_text())
        document["name"] = "<script>void 0</script> & \"co\""
        document["schematics"][0]["name"] = "<b>Ω<i> 50% #1"
        document["schematics"][0]["pages"][0]["name"] = "a?b=c&d:e 'f' \u202eRTL"
        design = self.folder / "odd names.json"
        design.write_text(json.dumps(document))
        self.check_gallery(design, document, "--no-frame")


if __name__ == "__main__":
    unittest.main(verbosity=2)
