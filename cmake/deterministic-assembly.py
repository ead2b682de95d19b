"""deterministic-assembly.py FILE: makes an assembly's bytes depend only on its sources.

mcs stamps assemblies with the time and with a random module identifier (MVID). This sets the time to zero and the identifier
to a digest of all other bytes, so that different assemblies still have different identifiers.
"""
import hashlib
import struct
import sys


def u16(data, at):
    return struct.unpack_from("<H", data, at)[0]


def u32(data, at):
    return struct.unpack_from("<I", data, at)[0]


def module_identifier(data, headers):
    """Offset of the first entry of the #GUID heap, which is the MVID."""
    optional = headers + 24
    cli_header = u32(data, optional + 96 + 14 * 8)  # data directory 14 of a 32-bit image
    sections = optional + u16(data, headers + 20)

    def offset(address):
        for section in range(sections, sections + 40 * u16(data, headers + 6), 40):
            size, start, _, raw = struct.unpack_from("<4I", data, section + 8)
            if start <= address < start + size:
                return address - start + raw
        sys.exit("no section holds %#x" % address)

    metadata = offset(u32(data, offset(cli_header) + 8))
    stream = metadata + 16 + u32(data, metadata + 12)
    count = u16(data, stream + 2)
    stream += 4
    for _ in range(count):
        name_end = data.index(b"\0", stream + 8)
        if data[stream + 8:name_end] == b"#GUID":
            return metadata + u32(data, stream)
        stream += 8 + (name_end - stream - 8 + 4) // 4 * 4
    sys.exit("no #GUID heap")


with open(sys.argv[1], "r+b") as file:
    content = bytearray(file.read())
    pe = u32(content, 0x3C)
    identifier = module_identifier(content, pe)
    content[pe + 8:pe + 12] = bytes(4)
    content[identifier:identifier + 16] = bytes(16)
    content[identifier:identifier + 16] = hashlib.sha256(content).digest()[:16]
    file.seek(0)
    file.write(content)
