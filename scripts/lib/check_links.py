#!/usr/bin/env python3
"""Checks the links of the pages in a folder: check_links.py <folder>."""
import pathlib
import sys

from documents.links import link_faults


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    pages = sorted(folder.rglob("*.md"))
    if not pages:
        sys.exit(f"there are no pages in {folder}")
    faults = [f"{page.relative_to(folder)}:{line}: {fault}" for page in pages
              for line, fault in link_faults(page, page.read_text())]
    print("\n".join(faults) if faults else f"{len(pages)} pages: all links are good.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
