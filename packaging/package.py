"""package.py CMAKE OBJCOPY SOURCE BUILD NAME: makes BUILD/NAME.zip for host projects, BUILD/NAME-debug.zip with its debug
information, and BUILD/NAME.zip.sha256.

The same files give the same bytes; see archive.py.
"""
import hashlib
import pathlib
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # the sources stay as they are
from archive import write

cmake, objcopy, source, build, name = sys.argv[1:]
build = pathlib.Path(build)
staged = build / "package" / name
debug = build / "package" / (name + "-debug")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, **options)


def split(image):
    """Copies an image to the debug folder, then strips its debug information and makes it name the copy."""
    information = debug / (image.name + ".debug")
    shutil.copyfile(image, information)
    # Without --preserve-dates, objcopy writes the current time into the image.
    run(objcopy, "--preserve-dates", "--strip-unneeded", image)
    run(objcopy, "--preserve-dates", "--add-gnu-debuglink=" + information.name, image.resolve(), cwd=debug)


shutil.rmtree(build / "package" / name, ignore_errors=True)
shutil.rmtree(debug, ignore_errors=True)
debug.mkdir(parents=True)
for component in ((), ("--component", "zip")):
    run(cmake, "--install", build, "--prefix", staged, *component, stdout=subprocess.DEVNULL)
for image in sorted((staged / "bin").iterdir()):
    if b".debug_info" in image.read_bytes():
        split(image)
archive = write(staged, build, source)
write(debug, build, source)
checksum = hashlib.sha256(archive.read_bytes()).hexdigest()
(build / (archive.name + ".sha256")).write_text("%s  %s\n" % (checksum, archive.name))
