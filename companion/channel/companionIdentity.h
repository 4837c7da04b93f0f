#pragma once

/// By what names the browsers' side and the program know each other.

/// The name under which the extension asks its browser for the relay, and the file name of the manifests
/// that tell the browser where it is.
inline constexpr char relayName[] = "org.quorvel.companion";

/// The extension in browsers of the Chromium family: derived by them from `key` in its manifest.
inline constexpr char chromiumExtensionId[] = "efjccmpdmfhknjplonnendlodjcbkhpc";

/// The extension in Firefox, as its manifest says.
inline constexpr char firefoxExtensionId[] = "companion@quorvel.org";

/// The program's socket in the private folder.
inline constexpr char companionSocketName[] = "companion";

/// What the two sides speak; they part where it differs.
inline constexpr int companionProtocol = 1;
