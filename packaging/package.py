"""package.py BUILD...: makes the package for host projects from builds of one or more architectures, in the first of these folders:
orvellogin-VERSION.zip with its SHA-256, orvellogin-VERSION-debug.zip with the debug information, and Orvel.Login.VERSION.nupkg for
Visual Studio.

The same files give the same bytes; see archive.py.
"""
import hashlib
import json
import pathlib
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # the sources stay as they are
import apipages
import nuget
from archive import write
from debuginformation import split

builds = [pathlib.Path(folder) for folder in sys.argv[1:]]
# Written by Package.cmake.
facts = [json.loads((build / "package.json").read_text("utf-8")) for build in builds]
source, version = facts[0]["source"], facts[0]["version"]
work = builds[0] / "package"
staged = work / ("orvellogin-" + version)
debug = work / (staged.name + "-debug")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, **options)


for folder in (staged, debug, work / "nuget"):
    shutil.rmtree(folder, ignore_errors=True)
for build, fact in zip(builds, facts):
    for component in ((), ("--component", "zip")):
        run(fact["cmake"], "--install", build, "--prefix", staged, *component, stdout=subprocess.DEVNULL)
    (debug / fact["architecture"]).mkdir(parents=True)
    for image in sorted((staged / "bin" / fact["architecture"]).iterdir()):
        split(fact["objcopy"], image, debug / fact["architecture"])
apipages.make(staged / "include", staged / "docs" / "api", source)
archive = write(staged, builds[0], source)
write(debug, builds[0], source)
checksum = hashlib.sha256(archive.read_bytes()).hexdigest()
(builds[0] / (archive.name + ".sha256")).write_text("%s  %s\n" % (checksum, archive.name))
nuget.stage(staged, work / "nuget", pathlib.Path(source, "packaging", "nuget"), version)
write(work / "nuget", builds[0], source, "Orvel.Login.%s.nupkg" % version)
