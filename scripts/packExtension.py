#!/usr/bin/env python3
"""Packs the browser extension: `packExtension.py FOLDER PACKED...`. The same files give the same bytes everywhere."""

import sys
import zipfile
from pathlib import Path


def pack(folder, packed):
    """Every file of the folder, manifest.json at the root, without times, owners and modes of this machine."""
    packed.parent.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(packed, "w", zipfile.ZIP_STORED) as archive:  # compressors differ from version to version
        for name in sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0))
            entry.create_system = 3  # Unix
            entry.external_attr = 0o100644 << 16
            archive.writestr(entry, (folder / name).read_bytes())


if __name__ == "__main__":
    for name in sys.argv[2:]:
        pack(Path(sys.argv[1]), Path(name))
