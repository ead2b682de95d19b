"""Writes archives that are reproducible: the same files give the same bytes. Entries are sorted, have the time of SOURCE_DATE_EPOCH
or else of the last commit in the folder `source`, and no owner.
"""
import os
import subprocess
import time
import zipfile


def epoch(source):
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if given:
        return int(given)
    try:
        commit = ("git", "-C", source, "log", "-1", "--format=%ct")
        return int(subprocess.run(commit, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout)
    except (OSError, subprocess.CalledProcessError):
        return 0  # not a checkout


def write(folder, build, source, name=None):
    """Packs `folder` into BUILD/FOLDER.zip; if `name` is given, only its content, into BUILD/NAME. Returns the path of the archive."""
    # ZIP times begin in 1980.
    stamp = max(time.gmtime(epoch(source))[:6], (1980, 1, 1, 0, 0, 0))
    archive = build / (name or folder.name + ".zip")
    top = folder if name else folder.parent
    with zipfile.ZipFile(archive, "w") as file:
        for path in sorted(path for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(path.relative_to(top).as_posix(), stamp)
            entry.external_attr = (0o100755 if path.suffix in (".dll", ".exe") else 0o100644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            file.writestr(entry, path.read_bytes())
    return archive
