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
import apipages
from archive import write
from debuginformation import split

cmake, objcopy, source, build, name = sys.argv[1:]
build = pathlib.Path(build)
staged = build / "package" / name
debug = build / "package" / (name + "-debug")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, **options)


shutil.rmtree(build / "package" / name, ignore_errors=True)
shutil.rmtree(debug, ignore_errors=True)
debug.mkdir(parents=True)
for component in ((), ("--component", "zip")):
    run(cmake, "--install", build, "--prefix", staged, *component, stdout=subprocess.DEVNULL)
apipages.make(staged / "include", staged / "docs" / "api", source)
for image in sorted((staged / "bin").iterdir()):
    split(objcopy, image, debug)
archive = write(staged, build, source)
write(debug, build, source)
checksum = hashlib.sha256(archive.read_bytes()).hexdigest()
(build / (archive.name + ".sha256")).write_text("%s  %s\n" % (checksum, archive.name))
