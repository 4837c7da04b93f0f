"""The desktop's browser is a program of the test's own: it keeps the addresses that it is opened with."""


def install_browser(walker, *then):
    """Makes it the default for http and https, before the walker opens Quorvel. Returns the file with an address a line.

    `then` are lines of shell that it goes on with, where "$1" is the address.
    """
    addresses = walker.desktop.folder / "addresses"
    addresses.write_text("", encoding="utf-8")
    program = walker.desktop.folder / "browser"
    program.write_text("\n".join(["#!/bin/sh", f'echo "$1" >>"{addresses}"', *then, ""]), encoding="utf-8")
    program.chmod(0o755)
    schemes = "x-scheme-handler/http", "x-scheme-handler/https"
    entry = walker.home / ".local/share/applications/browser.desktop"
    entry.parent.mkdir(parents=True)
    entry.write_text(f"[Desktop Entry]\nType=Application\nName=Browser\nExec={program} %u\n"
                     f"MimeType={';'.join(schemes)};\n", encoding="utf-8")
    choice = walker.home / ".config/mimeapps.list"
    choice.parent.mkdir(parents=True)
    choice.write_text("".join(["[Default Applications]\n", *(f"{scheme}=browser.desktop\n" for scheme in schemes)]),
                      encoding="utf-8")
    return addresses
