#!/usr/bin/env python3
"""Looks at the documentation's site as a phone shows it.

check_phone.py DIR PICTURES

Opens every page of DIR in a frame of 390 pixels in headless Chromium: none may be wider than that, so that
nobody has to scroll sideways to read (wide code and tables scroll in themselves). Leaves pictures of the
start page and of what its three doors lead to in the folder PICTURES, 390 and 1280 pixels wide, to be looked
at.
"""
import functools
import html
import http.server
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import threading

PHONE, DESKTOP = 390, 1280
ROUND = 80
DOORS = {"index": 2600, "replay": 2600, "tutorial": 2600, "media": 2600}
OPTIONS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync",
           "--hide-scrollbars")
MEASURE = """<!DOCTYPE html><meta charset="utf-8"><body><pre id="wide">running</pre><script>
const pages = %s, wide = [];
const frame = document.createElement("iframe");
frame.style = "width: %dpx; height: 800px; border: 0";
document.body.append(frame);
let at = -1;
function next() {
    if (++at == pages.length) {
        document.getElementById("wide").textContent = JSON.stringify(wide);
        frame.remove();
    } else {
        frame.src = pages[at];
    }
}
frame.onload = () => setTimeout(() => {
    const inside = frame.contentDocument;
    const widths = [inside.documentElement, inside.body, inside.getElementById("doc-content")]
        .filter(Boolean).map(element => element.scrollWidth);
    if (frame.contentWindow.innerWidth != %d || Math.max(...widths) > %d) {
        wide.push([pages[at], Math.max(...widths)]);
    }
    next();
}, 20);
next();
</script>"""
SHOW = ('<!DOCTYPE html><body style="margin:0"><iframe src="%s" style="width:%dpx;height:%dpx;border:0">'
        "</iframe>")


class Server(http.server.ThreadingHTTPServer):
    """Takes it calmly when Chromium goes on before it has everything."""

    def handle_error(self, request, client_address):
        pass


class Handler(http.server.SimpleHTTPRequestHandler):
    """Serves the site, and pages of this script's."""
    own = {}

    def do_GET(self):
        if self.path in self.own:
            body = self.own[self.path].encode()
            self.send_response(200)
            self.send_header("Content-Type", "text/html; charset=utf-8")
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)
        else:
            super().do_GET()

    def log_message(self, *arguments):
        pass


def chromium(*arguments):
    """What Chromium prints, with a profile that is gone afterwards."""
    with tempfile.TemporaryDirectory(prefix="marvo-") as profile:
        words = ["chromium", *OPTIONS, f"--user-data-dir={profile}", *arguments]
        return subprocess.run(words, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              timeout=900).stdout


def main():
    site, pictures = map(pathlib.Path, sys.argv[1:])
    pictures.mkdir(parents=True, exist_ok=True)
    pages = sorted(path.name for path in site.glob("*.html"))
    wide = []
    with Server(("127.0.0.1", 0),
                                         functools.partial(Handler, directory=str(site))) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        address = f"http://127.0.0.1:{server.server_port}"
        for name, height in DOORS.items():
            for width in PHONE, DESKTOP:
                # A window of Chromium's is never as narrow as a phone.
                Handler.own[f"/show-{name}-{width}"] = SHOW % (f"{name}.html", width, height)
                file = pictures / f"{name}-{width}.png"
                chromium(f"--window-size={max(width, 500)},{height}", f"--screenshot={file}",
                         "--virtual-time-budget=10000", f"{address}/show-{name}-{width}")
                if width < 500:
                    part = f"{width}x{height}+0+0"
                    subprocess.run(["convert", file, "-crop", part, "+repage", file], check=True)
        # One Chromium would keep what it has seen of all of them.
        for first in range(0, len(pages), ROUND):
            some = pages[first:first + ROUND]
            Handler.own["/measure"] = MEASURE % (json.dumps(some), PHONE, PHONE, PHONE)
            found = chromium("--dump-dom", f"--virtual-time-budget={len(some) * 2000}", f"{address}/measure")
            result = html.unescape(re.search(r'<pre id="wide">(.*?)</pre>', found, re.S)[1])
            if result == "running":
                sys.exit("check_phone.py: Chromium did not come to the last page")
            wide += json.loads(result)
        server.shutdown()
    for page, width in wide:
        print(f"{page}: {width} pixels wide")
    print(f"{len(pages)} pages at {PHONE} pixels, {len(wide)} of them wider; look at {pictures}/*.png")
    sys.exit(1 if wide else 0)


main()
