"""The links of a page."""
import re

from documents.blocks import prose_of

LINK = re.compile(r"\[[^\]]+\]\(([^)\s]+)\)")


def anchors(path):
    headings = re.findall(r"^#+ (.+)$", prose_of(path.read_text()), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).strip().replace(" ", "-")
            for heading in headings}


def link_faults(page, text):
    """Links must lead to files of the project and to headings in them."""
    prose = prose_of(text)
    for link in LINK.finditer(prose):
        target = link[1]
        line = prose.count("\n", 0, link.start()) + 1
        if re.match(r"https?:", target):
            continue
        name, _, anchor = target.partition("#")
        path = (page.parent / name).resolve() if name else page
        if not path.exists():
            yield line, f"the link {target} leads nowhere"
        elif anchor and anchor not in anchors(path):
            yield line, f"the link {target} names no heading of {path.name}"
