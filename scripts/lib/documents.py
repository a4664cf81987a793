"""The documents as web pages: what the packages hold of them, and whether their links lead somewhere."""
import concurrent.futures
import html.parser
import pathlib
import subprocess
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Beside the pages: pictures and schemas, but not the texts that pages are made of.
ENCLOSED = {".png", ".svg", ".json"}


def sources():
    """The Markdown files that become pages."""
    return [ROOT / "README.md", ROOT / "CHANGELOG.md", *sorted((ROOT / "docs").rglob("*.md"))]


def convert(source, folder):
    relative = source.relative_to(ROOT)
    page = (folder / relative).with_suffix(".html")
    page.parent.mkdir(parents=True, exist_ok=True)
    title = next((line[2:] for line in source.read_text(encoding="utf-8").splitlines()
                  if line.startswith("# ")), source.stem)
    subprocess.run(["pandoc", "--from", "gfm", "--to", "html5", "--template", "packaging/page.html",
                    "--lua-filter", "packaging/links.lua", "--metadata", f"source={relative}",
                    "--metadata", f"pagetitle={title}", "--output", str(page), str(relative)],
                   cwd=ROOT, check=True)
    return page


class Page(html.parser.HTMLParser):
    """The links and anchors of one page."""

    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src"):
                self.links.append(value)
            elif name == "id":
                self.anchors.add(value)


def dead_links(pages):
    """What the pages link to that is not there; addresses on the network are not tried."""
    parsed = {page.resolve(): Page(page) for page in pages}
    for path, page in parsed.items():
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme:
                continue
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            if not target.exists():
                yield f"{path.name}: {link} is not in the package"
            elif parts.fragment and (target not in parsed or
                                     parts.fragment not in parsed[target].anchors):
                yield f"{path.name}: {link} has no such place"


def make(folder):
    """Fills the folder with all pages and the files beside them; returns the dead links."""
    for source in sorted((ROOT / "docs").rglob("*")):
        if source.suffix in ENCLOSED:
            target = folder / source.relative_to(ROOT)
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(source.read_bytes())
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        pages = list(pool.map(lambda source: convert(source, folder), sources()))
    return list(dead_links(pages))
