#!/usr/bin/env python3
"""bmp_to_png.py IN.bmp OUT.png: an uncompressed 24-bit BMP as a PNG (standard library only)."""
import struct
import sys
import zlib


def main(src, dst):
    data = open(src, "rb").read()
    offset = struct.unpack_from("<I", data, 10)[0]
    width, height, _, bits = struct.unpack_from("<iiHH", data, 18)
    if bits != 24:
        sys.exit(f"{src}: {bits}-bit BMP, expected 24")
    stride = (width * 3 + 3) & ~3
    rows = []
    for y in range(abs(height)):
        row = height - 1 - y if height > 0 else y  # bottom-up unless the height is negative
        start = offset + row * stride
        bgr = data[start:start + width * 3]
        rgb = bytearray(len(bgr))
        rgb[0::3], rgb[1::3], rgb[2::3] = bgr[2::3], bgr[1::3], bgr[0::3]
        rows.append(b"\0" + bytes(rgb))

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", width, abs(height), 8, 2, 0, 0, 0)
    with open(dst, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                  chunk(b"IDAT", zlib.compress(b"".join(rows), 9)) + chunk(b"IEND", b""))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
