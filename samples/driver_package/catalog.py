#!/usr/bin/env python3
"""Makes the catalog of a driver package, not signed: catalog.py FOLDER CATALOG

The catalog lists every other file of the folder with its hash: of a program, the one that its own
signature is made of, of any other file that of all its bytes. The form is that of a catalog of the
first version, whose hashes are SHA-1; its signature need not be."""

import datetime
import hashlib
import os
import pathlib
import struct
import sys

CATALOG_LIST = "1.3.6.1.4.1.311.12.1.1"
CATALOG_MEMBER = "1.3.6.1.4.1.311.12.1.2"
NAME_VALUE = "1.3.6.1.4.1.311.12.2.1"
MEMBER_INFO = "1.3.6.1.4.1.311.12.2.2"
TRUST_LIST = "1.3.6.1.4.1.311.10.1"
INDIRECT_DATA = "1.3.6.1.4.1.311.2.1.4"
PROGRAM_DATA = "1.3.6.1.4.1.311.2.1.15"
FILE_DATA = "1.3.6.1.4.1.311.2.1.25"
SIGNED_DATA = "1.2.840.113549.1.7.2"
SHA1 = "1.3.14.3.2.26"

PROGRAM = "{C689AAB8-8E78-11D0-8C47-00C04FC295EE}"
ANY_FILE = "{DE351A42-8E59-11D0-8C47-00C04FC295EE}"
NAME_FLAGS = 0x10010001  # of the hashed attributes, and its value is text
MEMBER_VERSION = 0x200


# The parts of ASN.1's distinguished encoding that a catalog takes.
def tagged(tag, *parts):
    content = b"".join(parts)
    size = len(content)
    if size < 0x80:
        return bytes([tag, size]) + content
    length = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([tag, 0x80 | len(length)]) + length + content


def sequence(*parts):
    return tagged(0x30, *parts)


def set_of(*parts):
    return tagged(0x31, *sorted(parts))


def integer(value):
    return tagged(0x02, value.to_bytes(value.bit_length() // 8 + 1, "big"))


def octets(value):
    return tagged(0x04, value)


def big_text(value):
    return tagged(0x1E, value.encode("utf-16-be"))


def object_id(dotted):
    first, second, *rest = (int(part) for part in dotted.split("."))
    content = bytearray([40 * first + second])
    for part in rest:
        groups = [part & 0x7F]
        while part := part >> 7:
            groups.append(0x80 | part & 0x7F)
        content += bytes(reversed(groups))
    return tagged(0x06, bytes(content))


NULL = tagged(0x05)
# Where Windows once had the name of the file.
NO_LINK = tagged(0xA2, tagged(0x80, "<<<Obsolete>>>".encode("utf-16-be")))


def is_program(image):
    return image[:2] == b"MZ"


def hashed(image):
    """The bytes of a program that its signature is made of: not the checksum, nor the signature itself."""
    (header,) = struct.unpack_from("<I", image, 0x3C)
    assert image[header : header + 4] == b"PE\0\0", "an unknown program file"
    optional = header + 24
    (magic,) = struct.unpack_from("<H", image, optional)
    assert magic == 0x20B, "not a program of 64-bit Windows"
    checksum, directory = optional + 64, optional + 112 + 4 * 8
    start, size = struct.unpack_from("<II", image, directory)
    if not size:
        # A signature begins at a multiple of eight bytes.
        image, start = image + bytes(-len(image) % 8), len(image) + -len(image) % 8
    return image[:checksum] + image[checksum + 4 : directory] + image[directory + 8 : start]


def attribute(kind, value):
    return sequence(object_id(kind), set_of(value))


def member(path):
    image = path.read_bytes()
    program = is_program(image)
    digest = hashlib.sha1(hashed(image) if program else image).digest()
    about = sequence(tagged(0x03, b"\0"), tagged(0xA0, NO_LINK)) if program else NO_LINK
    data = sequence(sequence(object_id(PROGRAM_DATA if program else FILE_DATA), about),
                    sequence(sequence(object_id(SHA1), NULL), octets(digest)))
    name = sequence(big_text("File"), integer(NAME_FLAGS), octets((path.name.lower() + "\0").encode("utf-16-le")))
    info = sequence(big_text(PROGRAM if program else ANY_FILE), integer(MEMBER_VERSION))
    tag = octets((digest.hex().upper() + "\0").encode("utf-16-le"))
    return sequence(tag, set_of(attribute(NAME_VALUE, name), attribute(MEMBER_INFO, info), attribute(INDIRECT_DATA, data)))


def catalog(files):
    now = datetime.datetime.now(datetime.timezone.utc).strftime("%y%m%d%H%M%SZ")
    members = sequence(*sorted(member(path) for path in files))
    trust_list = sequence(sequence(object_id(CATALOG_LIST)), octets(os.urandom(16)), tagged(0x17, now.encode()),
                          sequence(object_id(CATALOG_MEMBER), NULL), members)
    content = sequence(object_id(TRUST_LIST), tagged(0xA0, trust_list))
    signed = sequence(integer(1), set_of(), content, set_of())
    return sequence(object_id(SIGNED_DATA), tagged(0xA0, signed))


def main():
    folder, made = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    made.write_bytes(catalog([path for path in folder.iterdir() if path != made]))


main()
