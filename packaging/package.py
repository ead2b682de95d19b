"""package.py CMAKE OBJCOPY SOURCE BUILD NAME: makes BUILD/NAME.zip for host projects, BUILD/NAME-debug.zip with its debug
information, and BUILD/NAME.zip.sha256.

The same files give the same bytes: entries are sorted, have the time of SOURCE_DATE_EPOCH or else of the last commit, and no
owner.
"""
import hashlib
import os
import pathlib
import shutil
import subprocess
import sys
import time
import zipfile

cmake, objcopy, source, build, name = sys.argv[1:]
build = pathlib.Path(build)
staged = build / "package" / name
debug = build / "package" / (name + "-debug")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, **options)


def epoch():
    given = os.environ.get("SOURCE_DATE_EPOCH")
    if given:
        return int(given)
    try:
        commit = ("git", "-C", source, "log", "-1", "--format=%ct")
        return int(run(*commit, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout)
    except (OSError, subprocess.CalledProcessError):
        return 0  # not a checkout


def split(image):
    """Copies an image to the debug folder, then strips its debug information and makes it name the copy."""
    information = debug / (image.name + ".debug")
    shutil.copyfile(image, information)
    # Without --preserve-dates, objcopy writes the current time into the image.
    run(objcopy, "--preserve-dates", "--strip-unneeded", image)
    run(objcopy, "--preserve-dates", "--add-gnu-debuglink=" + information.name, image.resolve(), cwd=debug)


def write(folder):
    # ZIP times begin in 1980.
    stamp = max(time.gmtime(epoch())[:6], (1980, 1, 1, 0, 0, 0))
    archive = build / (folder.name + ".zip")
    with zipfile.ZipFile(archive, "w") as file:
        for path in sorted(path for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(path.relative_to(folder.parent).as_posix(), stamp)
            entry.external_attr = (0o100755 if path.suffix in (".dll", ".exe") else 0o100644) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            file.writestr(entry, path.read_bytes())
    return archive


shutil.rmtree(build / "package" / name, ignore_errors=True)
shutil.rmtree(debug, ignore_errors=True)
debug.mkdir(parents=True)
for component in ((), ("--component", "zip")):
    run(cmake, "--install", build, "--prefix", staged, *component, stdout=subprocess.DEVNULL)
for image in sorted((staged / "bin").iterdir()):
    if b".debug_info" in image.read_bytes():
        split(image)
archive = write(staged)
write(debug)
checksum = hashlib.sha256(archive.read_bytes()).hexdigest()
(build / (archive.name + ".sha256")).write_text("%s  %s\n" % (checksum, archive.name))
