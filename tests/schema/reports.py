"""What must hold of every page of --report and every picture of --plot; used by validate.py."""
import re
import struct
import xml.etree.ElementTree as xml
from html.parser import HTMLParser

VOID = {"meta", "br", "path", "circle", "rect", "image", "line"}


class Page(HTMLParser):
    """Balanced tags, no script, nothing from elsewhere; the text that is seen."""

    def __init__(self, text):
        super().__init__()
        self.open, self.seen, self.faults = [], [], []
        self.feed(text)
        self.faults += [f"<{tag}> stays open" for tag in self.open]

    def handle_starttag(self, tag, attributes):
        if tag not in VOID:
            self.open.append(tag)
        if tag in ("script", "link", "iframe", "object"):
            self.faults.append(f"<{tag}>")
        for name, value in attributes:
            if name in ("src", "href") and not value.startswith("data:image/jpeg;base64,"):
                self.faults.append(f"{name}={value[:40]}")

    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)
        if tag not in VOID:
            self.open.pop()

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.faults.append(f"</{tag}> without its begin")

    def handle_data(self, data):
        if not self.open or self.open[-1] not in ("style", "code"):
            self.seen.append(data)


def numbers_of(result):
    """Numbers of the result that a page shows: sigma0, the root mean squares, the first residuals."""
    if result.get("set_aside"):  # the page tells the residuals from the points that stay
        return
    rms = result.get("rms") or {}
    yield from (v for v in [result.get("sigma0"), *(rms.values() if isinstance(rms, dict) else [])] if isinstance(v, float))
    points = result.get("points")
    for point in points[:3] if isinstance(points, list) else []:
        yield from (point[k] for k in ("dx", "dy", "dz", "deviation") if isinstance(point.get(k), float))


def page_faults(text, result):
    page = Page(text)
    seen = " ".join(page.seen)
    faults = page.faults + [f"{word} on the page" for word in ("nan", "inf", "http") if re.search(rf"\b{word}\b", seen)]
    for svg in re.findall(r"<svg.*?</svg>", text, re.S):
        xml.fromstring(svg)
    if result["command"] in ("measure",):  # its page counts the other way round, by photo
        return faults
    shown = [(float(t), len(t.partition(".")[2])) for t in re.findall(r"-?\d+\.\d+", seen)]
    faults += [f"{n} is not on the page" for n in numbers_of(result)
               if not any(abs(value - n) <= 0.5000001 * 10.0 ** -places for value, places in shown)]
    return faults


def plot_faults(path):
    with open(path, "rb") as file:
        data = file.read()
    if path.endswith(".svg"):
        root = xml.fromstring(data)
        good = root.tag.endswith("}svg") and root.get("width").endswith("mm") and len(root) > 2 and b"nan" not in data
    elif path.endswith(".pdf"):
        good = data.startswith(b"%PDF-") and data.rstrip().endswith(b"%%EOF") and b"/CreationDate" not in data
    else:
        width, height = struct.unpack(">II", data[16:24])
        good = data.startswith(b"\x89PNG\r\n\x1a\n") and width == 1600 and 200 < height < 8000
    return [] if good else [f"{path}: no good picture"]
