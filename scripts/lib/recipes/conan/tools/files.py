import pathlib
import shutil


def load(_, path):
    return pathlib.Path(path).read_text()


def copy(_, pattern, src, dst):
    """As Conan's: the files below `src` whose path fits the pattern, with their folders."""
    for path in pathlib.Path(src).rglob("*"):
        relative = path.relative_to(src)
        fits = relative.match(pattern) if "*" not in pattern else _fits(relative, pattern)
        if path.is_file() and fits:
            target = pathlib.Path(dst) / relative
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, target)


def _fits(relative, pattern):
    folder, _, name = pattern.rpartition("/")
    if folder:
        return relative.parts[0] == folder
    return len(relative.parts) == 1 and relative.match(name)
