import pathlib
import shutil


def load(_, path):
    return pathlib.Path(path).read_text()


def copy(_, pattern, src, dst):
    """As Conan's: the files that fit the pattern, with their folders; `*` stands for folders too."""
    src = pathlib.Path(src).resolve()
    folder, _, name = pattern.rpartition("/")
    found = (src / folder).rglob(name) if folder else src.glob(name)
    for path in found:
        if path.is_file():
            target = pathlib.Path(dst) / path.relative_to(src)
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, target)
