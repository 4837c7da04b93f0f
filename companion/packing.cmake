# The extension as browsers take it: the folder itself, packed for the stores and for Firefox, and the manifests that
# tell a browser where the relay is.
set(extension ${CMAKE_CURRENT_SOURCE_DIR}/extension)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${extension}/manifest.json)
file(READ ${extension}/manifest.json manifest)
string(JSON extensionVersion GET "${manifest}" version)

file(GLOB_RECURSE extensionFiles CONFIGURE_DEPENDS ${extension}/*)
# A file that is gone makes nothing newer; this list of the files does.
list(JOIN extensionFiles "\n" listed)
file(CONFIGURE OUTPUT extensionFiles.txt CONTENT "${listed}\n" @ONLY)
set(extensionInputs ${extensionFiles} ${CMAKE_CURRENT_BINARY_DIR}/extensionFiles.txt)

# From the program to the extension it is ../share/quorvel/companion, here as when installed.
set(copied ${CMAKE_BINARY_DIR}/share/quorvel/companion)
add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/copied.stamp
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${copied}
    COMMAND ${CMAKE_COMMAND} -E copy_directory ${extension} ${copied}
    COMMAND ${CMAKE_COMMAND} -E touch ${CMAKE_CURRENT_BINARY_DIR}/copied.stamp
    DEPENDS ${extensionInputs} VERBATIM)

set(packed ${CMAKE_BINARY_DIR}/packed/quorvel-companion-${extensionVersion})
set(packer ${PROJECT_SOURCE_DIR}/scripts/packExtension.py)
add_custom_command(OUTPUT ${packed}.zip ${packed}.xpi
    COMMAND /usr/bin/python3 -B ${packer} ${extension} ${packed}.zip ${packed}.xpi
    DEPENDS ${extensionInputs} ${packer} VERBATIM)
add_custom_target(quorvel-companion-extension ALL
    DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/copied.stamp ${packed}.zip ${packed}.xpi)

install(DIRECTORY ${extension}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/quorvel/companion)

# For packagers: what belongs outside of the prefix, so that every user's browsers find it.
set(forAll COMPONENT companion-system EXCLUDE_FROM_ALL)
install(DIRECTORY ${extension}/ DESTINATION /usr/share/chromium/extensions/quorvel-companion ${forAll})
install(FILES ${packed}.xpi RENAME ${firefoxExtensionId}.xpi ${forAll}
    DESTINATION "/usr/share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}") # Firefox's own number
configure_file(installHostManifests.cmake.in installHostManifests.cmake @ONLY)
install(SCRIPT ${CMAKE_CURRENT_BINARY_DIR}/installHostManifests.cmake ${forAll})
