"""selftest.py SOURCE NAME BUILD...: makes NAME.zip in the first BUILD, with which a Windows machine runs the tests without this
project's sources and tools: selftest.cmd, and for each build a folder with its programs and a list of tests made from CTest's.

The list has every test of CTest's but those in `sources_only`. A test that fits neither is an error here.
"""
import json
import pathlib
import re
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True  # the sources stay as they are
from archive import write

source = pathlib.Path(sys.argv[1])
builds = [pathlib.Path(build) for build in sys.argv[3:]]
staged = builds[0] / "package" / sys.argv[2]

# They check sources, scripts and packages, or need a Linux shell.
sources_only = {"hosts_install", "orvdiag_machines", "package", "rebuild", "scripts", "selftest"}
# They need what only a test under Wine can set for one process, by the first words of their names.
only_here = {
    "no_runtime": "needs a machine without the .NET Framework",
    "orvsecutils_environment.": "needs a user with another language and time zone",
}
# The C library of Microsoft's ABI, which not every machine has.
needs = {"hosts_clang-cl": "vcruntime140.dll"}
# Of the build's programs and libraries these are for measuring or for pictures.
left_out = ("*_bench.exe", "*_candidate.dll", "*_first_call.exe", "LoginBench.dll", "*_pictures.exe", "*.dll.a")


def listed(test, build, architecture):
    """The row of a test of CTest's, or None if the self-test leaves it out."""
    properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
    command = test.get("command", [])
    if test["name"] in sources_only or properties.get("DISABLED"):
        return None
    row = {"name": test["name"], "seconds": int(properties.get("TIMEOUT", 120))}
    if test["name"].startswith("hosts_"):
        host = test["name"].removeprefix("hosts_")
        return {**row, "program": "", "arguments": f"--hosts {architecture} {host}", "needs": needs.get(test["name"], "")}
    program = next((i for i, word in enumerate(command) if word.endswith(".exe")), None)
    if program is None:
        sys.exit(f"selftest.py: {test['name']} runs no program; name it in sources_only if it cannot run on Windows")
    row["program"] = pathlib.Path(command[program]).relative_to(build).as_posix()
    row["arguments"] = " ".join(command[program + 1 :])
    reason = next((text for start, text in only_here.items() if test["name"].startswith(start)), None)
    return {**row, "neverrun": reason} if reason else row


def copy_hosts(host, build, to):
    built = build / "tests/hosts" / host
    if not list(built.glob("*.exe")):
        sys.exit(f"selftest.py: the hosts of {host} are not built; run the tests hosts_* first")
    shutil.copytree(built / "OrvelLoginManagerClient", to / "OrvelLoginManagerClient")
    for path in built.iterdir():
        if path.suffix in (".exe", ".dll"):
            shutil.copy(path, to)


def stage(build):
    architecture = build.name.split("-")[1]  # of mingw-x86-release
    folder = staged / architecture
    ctest = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, stdout=subprocess.PIPE)
    rows = [row for test in json.loads(ctest.stdout)["tests"] if (row := listed(test, build, architecture))]
    shutil.copytree(build / "bin", folder / "bin", ignore=shutil.ignore_patterns(*left_out))
    for host in [row["arguments"].split()[-1] for row in rows if not row["program"]]:
        copy_hosts(host, build, folder / "hosts" / host)
    shutil.copy(source / "tests/hosts/signin.txt", folder)
    (folder / "tests.json").write_text(json.dumps(rows, indent=1) + "\n")
    images = [path for path in folder.rglob("*") if path.suffix in (".exe", ".dll") and b".debug_info" in path.read_bytes()]
    strip = re.search(r"^CMAKE_STRIP:FILEPATH=(.*)$", (build / "CMakeCache.txt").read_text(), re.M).group(1)
    subprocess.run([strip, "--strip-debug", *images], check=True)


shutil.rmtree(staged, ignore_errors=True)
for build in builds:
    stage(build)
for runner in sorted(staged.glob("*/bin/selftest.exe")):
    runner.rename(staged / "selftest.exe")  # either serves all
shutil.copy(source / "packaging/selftest.cmd", staged)
print(write(staged, builds[0], source))
