#!/usr/bin/env python3
"""What browsers and packagers get: `tst_packing.py BUILD`, after a build."""

import base64
import filecmp
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EXTENSION = ROOT / "companion/extension"
BUILD = Path(sys.argv.pop(1)) if len(sys.argv) > 1 else ROOT / "build/dev"
MANIFEST = json.loads((EXTENSION / "manifest.json").read_text(encoding="utf-8"))
FIREFOX_ID = MANIFEST["browser_specific_settings"]["gecko"]["id"]
HOST = "org.quorvel.companion.json"
CHROMIUM_FOLDERS = ["etc/chromium/native-messaging-hosts", "etc/opt/chrome/native-messaging-hosts",
                    "etc/opt/edge/native-messaging-hosts"]
FIREFOX_FOLDER = "usr/lib/mozilla/native-messaging-hosts"
FIREFOX_EXTENSIONS = "usr/share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}"
CHROMIUM_EXTENSION = "usr/share/chromium/extensions/quorvel-companion"
RELAY = "libexec/quorvel/quorvel-companion-relay"
PRIVATE_KEY = re.compile(b"-----BEGIN [A-Z ]*PRIVATE " + b"KEY")


def chromium_id(key):
    """How the Chromium family names an extension: after its public key, in letters from a to p."""
    digits = hashlib.sha256(base64.b64decode(key, validate=True)).hexdigest()[:32]
    return "".join(chr(ord("a") + int(digit, 16)) for digit in digits)


def files_in(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def holds_private_key(content):
    return bool(PRIVATE_KEY.search(content))


class Packed(unittest.TestCase):
    def packed(self, ending):
        return BUILD / f"packed/quorvel-companion-{MANIFEST['version']}.{ending}"

    def test_hold_exactly_the_folder(self):
        wanted = files_in(EXTENSION)
        self.assertIn("manifest.json", wanted)
        for ending in ["zip", "xpi"]:
            with self.subTest(ending=ending), zipfile.ZipFile(self.packed(ending)) as archive:
                self.assertIsNone(archive.testzip())
                self.assertEqual(sorted(wanted), archive.namelist())
                self.assertEqual(wanted, {name: archive.read(name) for name in archive.namelist()})

    def test_copy_of_the_build_holds_exactly_the_folder(self):
        self.assertEqual(files_in(EXTENSION), files_in(BUILD / "share/quorvel/companion"))

    def test_depend_on_the_files_alone(self):
        with tempfile.TemporaryDirectory() as temporary:
            other = Path(temporary) / "extension"
            shutil.copytree(EXTENSION, other)
            for path in other.rglob("*"):
                os.utime(path, (1_600_000_000, 1_600_000_000))
                path.chmod(0o700)
            again = Path(temporary) / "again.xpi"
            subprocess.run(["/usr/bin/python3", "-B", ROOT / "scripts/packExtension.py", other, again], check=True)
            self.assertTrue(filecmp.cmp(self.packed("xpi"), again, shallow=False))
            self.assertTrue(filecmp.cmp(self.packed("zip"), again, shallow=False))


class Installed(unittest.TestCase):
    def install(self, *options):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        subprocess.run(["cmake", "--install", BUILD / "companion", *options], check=True, stdout=subprocess.DEVNULL,
                       env=os.environ | {"DESTDIR": folder.name})
        return Path(folder.name)

    def test_host_manifests_name_the_relay_and_our_extension(self):
        for prefix in ["/usr", "/opt/quorvel"]:
            root = self.install("--component", "companion-system", "--prefix", prefix)
            common = {"name": "org.quorvel.companion", "path": f"{prefix}/{RELAY}", "type": "stdio"}
            origin = f"chrome-extension://{chromium_id(MANIFEST['key'])}/"
            for folder in CHROMIUM_FOLDERS:
                with self.subTest(prefix=prefix, folder=folder):
                    self.compare(root / folder / HOST, common | {"allowed_origins": [origin]})
            with self.subTest(prefix=prefix, folder=FIREFOX_FOLDER):
                self.compare(root / FIREFOX_FOLDER / HOST, common | {"allowed_extensions": [FIREFOX_ID]})

    def compare(self, path, wanted):
        manifest = json.loads(path.read_text(encoding="utf-8"))
        self.assertTrue(manifest.pop("description"))
        self.assertEqual(wanted, manifest)

    def test_browsers_of_all_users_get_the_extension(self):
        root = self.install("--component", "companion-system", "--prefix", "/usr")
        self.assertEqual(files_in(EXTENSION), files_in(root / CHROMIUM_EXTENSION))
        self.assertTrue(filecmp.cmp(root / FIREFOX_EXTENSIONS / f"{FIREFOX_ID}.xpi",
                                    BUILD / f"packed/quorvel-companion-{MANIFEST['version']}.xpi", shallow=False))

    def test_the_component_adds_nothing_else(self):
        root = self.install("--component", "companion-system", "--prefix", "/usr")
        wanted = [f"{folder}/{HOST}" for folder in [*CHROMIUM_FOLDERS, FIREFOX_FOLDER]]
        wanted += [f"{FIREFOX_EXTENSIONS}/{FIREFOX_ID}.xpi"]
        wanted += [f"{CHROMIUM_EXTENSION}/{name}" for name in files_in(EXTENSION)]
        self.assertEqual(sorted(wanted), sorted(files_in(root)))

    def test_without_it_nothing_is_outside_the_prefix(self):
        root = self.install("--prefix", "/usr/local")
        installed = files_in(root / "usr/local")
        self.assertEqual(len(installed), len(files_in(root)))
        self.assertTrue(os.access(root / "usr/local" / RELAY, os.X_OK))
        self.assertEqual({RELAY} | {f"share/quorvel/companion/{name}" for name in files_in(EXTENSION)}, set(installed))


class Keys(unittest.TestCase):
    def test_the_ids_are_as_browsers_derive_them(self):
        header = (ROOT / "companion/channel/companionIdentity.h").read_text(encoding="utf-8")
        self.assertIn(f'chromiumExtensionId[] = "{chromium_id(MANIFEST["key"])}"', header)
        self.assertIn(f'firefoxExtensionId[] = "{FIREFOX_ID}"', header)

    def test_no_private_key_is_in_the_tree(self):
        looked_at = 0
        for folder, folders, names in os.walk(ROOT):
            folders[:] = [name for name in folders if name != ".git" and (Path(folder) / name) != ROOT / "build"]
            for name in names:
                path = Path(folder) / name
                if path.is_file():
                    looked_at += 1
                    self.assertFalse(holds_private_key(path.read_bytes()), path)
                    self.assertNotEqual(".pem", path.suffix, path)
        self.assertGreater(looked_at, 200, "the tree was not found")

    def test_a_private_key_is_recognised(self):
        for kind in [b"", b"RSA ", b"EC ", b"ENCRYPTED "]:
            self.assertTrue(holds_private_key(b"x\n-----BEGIN " + kind + b"PRIVATE " + b"KEY-----\n"))
        self.assertFalse(holds_private_key(b"-----BEGIN PUBLIC " + b"KEY-----"))


if __name__ == "__main__":
    unittest.main()
