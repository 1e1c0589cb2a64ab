#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""packico.py OUT.ico PNG...: packs square PNG pictures into one icon file, as they are."""
import struct
import sys

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def main(out, names):
    pictures = []
    for name in names:
        with open(name, "rb") as file:
            pictures.append(file.read())
    directory = struct.pack("<HHH", 0, 1, len(pictures))
    offset = len(directory) + 16 * len(pictures)
    for name, picture in zip(names, pictures):
        if not picture.startswith(PNG_SIGNATURE):
            sys.exit(f"{name} is no PNG picture")
        width, height = struct.unpack(">II", picture[16:24])
        # A side of 256 is written as 0: the field is one byte.
        directory += struct.pack("<BBBBHHII", width % 256, height % 256, 0, 0, 1, 32, len(picture), offset)
        offset += len(picture)
    with open(out, "wb") as file:
        file.write(directory + b"".join(pictures))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2:])
