"""shippedfiles.py OBJCOPY HEADER FILE...: writes a C++ header with the digests of the library's files, as they are built and as they
are after their debug information was removed."""
import hashlib
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the sources stay as they are
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "packaging"))
from debuginformation import split

objcopy, header, *files = sys.argv[1:]


def content(data):
    """What neither a signature nor `strip` changes in an image of which it removes nothing: all but the time, the checksum and the
    signature, which begins at a multiple of 8 bytes."""
    headers = struct.unpack_from("<I", data, 0x3C)[0]
    options = headers + 24
    certificate = options + (128 if struct.unpack_from("<H", data, options)[0] == 0x10B else 144)
    end = struct.unpack_from("<I", data, certificate)[0] or len(data)
    kept = data[:headers + 8], data[headers + 12:options + 64], data[options + 68:certificate], data[certificate + 8:end]
    return b"".join(kept) + bytes(-end % 8)


def variants(file):
    """As built, as in the package, and as `strip` leaves it."""
    yield file.read_bytes()
    if b".debug_info" not in file.read_bytes():
        return
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder, file.name)
        for option in ("--strip-debug", "--strip-all"):
            subprocess.run([objcopy, option, file, copy], check=True)
            yield copy.read_bytes()
        shutil.copyfile(file, copy)
        split(objcopy, copy, pathlib.Path(folder))
        yield copy.read_bytes()


rows = []
for file in map(pathlib.Path, files):
    contents = sorted({content(data) for data in variants(file)}, key=len)
    rows += ['    {"%s", %d, "%s"},' % (file.name, len(data), hashlib.sha256(data).hexdigest()) for data in contents]
pathlib.Path(header).write_text("""#pragma once

/// A form of a file of the library: as built, or without debug information.
struct shippedfile {
    const char* name;
    unsigned bytes;      ///< of `image::content`
    const char* digest;  ///< SHA-256 of them
};

constexpr shippedfile shippedfiles[] = {
%s
};
""" % "\n".join(rows))
