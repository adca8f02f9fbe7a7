"""Collects the carried fonts from fetched packages: collect.py NODE_MODULES FOLDER

Each becomes a TrueType file named by its PostScript name, with its licence beside it. Two families
are published only in parts, a compressed file for each set of letters: those are unpacked, and
every part but the first becomes a separate family ("Neonderthaw Extended"), so that one text can
use all of them.
"""

import pathlib
import shutil
import struct
import sys
import zlib

WHOLE = {  # package: (file name, its weights)
    "antic-didone": ("AnticDidone", ["400Regular"]),
    "bebas-neue": ("BebasNeue", ["400Regular"]),
    "caveat": ("Caveat", ["700Bold"]),
    "cormorant-garamond": ("CormorantGaramond", ["600SemiBold"]),
    "courier-prime": ("CourierPrime", ["400Regular", "700Bold"]),
    "fjalla-one": ("FjallaOne", ["400Regular"]),
    "gabarito": ("Gabarito", ["600SemiBold"]),
    "gravitas-one": ("GravitasOne", ["400Regular"]),
    "instrument-sans": ("InstrumentSans", ["600SemiBold"]),
    "lexend": ("Lexend", ["600SemiBold"]),
    "marck-script": ("MarckScript", ["400Regular"]),
    "quicksand": ("Quicksand", ["700Bold"]),
    # "system:" and "mono:", in all their weights
    "inter": (
        "Inter",
        ["300Light", "400Regular", "500Medium", "600SemiBold", "700Bold", "800ExtraBold"],
    ),
    "jetbrains-mono": (
        "JetBrainsMono",
        ["300Light", "400Regular", "500Medium", "600SemiBold", "700Bold", "800ExtraBold"],
    ),
    # Debian has no Hebrew font in several weights
    "noto-sans-hebrew": ("NotoSansHebrew", ["300Light", "400Regular", "600SemiBold", "700Bold"]),
    # replacements for fonts that may not be distributed
    "libre-baskerville": ("LibreBaskerville", ["400Regular", "600SemiBold", "700Bold"]),
    "nunito-sans": ("NunitoSans", ["500Medium", "600SemiBold", "700Bold"]),
}

PARTED = {  # package: family
    "neonderthaw": "Neonderthaw",
    "protest-revolution": "Protest Revolution",
}
PARTS = {"latin": "", "latin-ext": "Extended", "vietnamese": "Vietnamese"}

Tables = dict[bytes, bytes]


def unpacked(woff: bytes) -> tuple[bytes, Tables]:
    """The kind of font in a WOFF file, and its tables."""
    signature, kind, _, count = struct.unpack(">4s4sIH", woff[:14])
    if signature != b"wOFF":
        raise ValueError("is not a WOFF file")
    tables = {}
    for i in range(count):
        tag, offset, packed, length, _ = struct.unpack_from(">4sIIII", woff, 44 + 20 * i)
        data = woff[offset : offset + packed]
        tables[tag] = zlib.decompress(data) if packed < length else data
        if len(tables[tag]) != length:
            raise ValueError("is truncated")
    return kind, tables


def renamed(names: bytes, family: str) -> bytes:
    """A name table that calls the font `family` and keeps the copyright and licence entries."""
    _, count, strings = struct.unpack_from(">HHH", names)
    kept = {1: family, 2: "Regular", 4: family, 6: family.replace(" ", "") + "-Regular"}
    for i in range(count):
        record = struct.unpack_from(">HHHHHH", names, 6 + 12 * i)
        platform, encoding, language, what, length, offset = record
        if (platform, encoding, language) == (3, 1, 0x409) and what in (0, 5, 7, 13, 14):
            text = names[strings + offset : strings + offset + length]
            kept[what] = text.decode("utf-16-be")
    records, text = b"", b""
    for what, name in sorted(kept.items()):
        encoded = name.encode("utf-16-be")
        records += struct.pack(">HHHHHH", 3, 1, 0x409, what, len(encoded), len(text))
        text += encoded
    return struct.pack(">HHH", 0, len(kept), 6 + len(records)) + records + text


def checksum(data: bytes) -> int:
    padded = data + bytes(-len(data) % 4)
    return sum(struct.unpack(f">{len(padded) // 4}I", padded)) & 0xFFFFFFFF


def font_file(kind: bytes, tables: Tables) -> bytes:
    tables[b"head"] = tables[b"head"][:8] + bytes(4) + tables[b"head"][12:]
    power = len(tables).bit_length() - 1
    search = 16 << power
    header = kind + struct.pack(">HHHH", len(tables), search, power, 16 * len(tables) - search)
    offset = len(header) + 16 * len(tables)
    directory, body = b"", b""
    for tag, data in sorted(tables.items()):
        directory += tag + struct.pack(">III", checksum(data), offset + len(body), len(data))
        if tag == b"head":
            adjustment = offset + len(body) + 8
        body += data + bytes(-len(data) % 4)
    file = bytearray(header + directory + body)
    struct.pack_into(">I", file, adjustment, (0xB1B0AFBA - checksum(file)) & 0xFFFFFFFF)
    return bytes(file)


def collect(packages: pathlib.Path, folder: pathlib.Path) -> None:
    folder.mkdir(parents=True)
    for package, (name, weights) in WHOLE.items():
        source = packages / "@expo-google-fonts" / package
        for weight in weights:
            (file,) = source.rglob(f"{name}_{weight}.ttf")
            style = weight.lstrip("0123456789")
            shutil.copyfile(file, folder / f"{name}-{style}.ttf")
        licence = source / "LICENSE_FONT"
        if not licence.exists():  # Missing in this package; the font's other package has it.
            licence = packages / "@fontsource" / package / "LICENSE"
        shutil.copyfile(licence, folder / f"{name}-LICENSE.txt")
    for package, family in PARTED.items():
        source = packages / "@fontsource" / package
        name = family.replace(" ", "")
        for part, suffix in PARTS.items():
            packed = source / "files" / f"{package}-{part}-400-normal.woff"
            kind, tables = unpacked(packed.read_bytes())
            if suffix:
                tables[b"name"] = renamed(tables[b"name"], f"{family} {suffix}")
            (folder / f"{name}{suffix}-Regular.ttf").write_bytes(font_file(kind, tables))
        shutil.copyfile(source / "LICENSE", folder / f"{name}-LICENSE.txt")


if __name__ == "__main__":
    collect(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
