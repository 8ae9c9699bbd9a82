# A Debian package of the command, the plug-in and the sample, so that every machine of a render farm installs the
# same build: `cpack -G DEB` in the build folder (or `cmake --build build --target package`).
#
# The package installs under /usr: the command in /usr/bin, the plug-in with its property list in
# /usr/lib/velmira/plugins, the portrait in /usr/share/velmira/samples. The folders below the prefix are the ones the
# build tree uses, so the command finds its plug-in the same way everywhere.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmira)
set(CPACK_PACKAGE_VENDOR Quillmere)
set(CPACK_PACKAGE_CONTACT "Quillmere Velmira developers <velmira@quillmere.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "skin-retouching video effect and its headless command-line host")
set(CPACK_PACKAGE_DESCRIPTION
    "velmira renders images, numbered image sequences and videos through the Velmira effect: skin found by hue,
smoothed with an edge-keeping blur and lifted in colour by five sliders, all on the GPU through OpenGL
(Mesa's llvmpipe where there is no GPU).")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
# Debugging symbols would triple the package that every machine downloads.
set(CPACK_STRIP_FILES ON)
# The libraries the command and the plug-in link are found by dpkg-shlibdeps, with the versions this build needs.
# Mesa's EGL and its software rasteriser are loaded at run time, not linked, so they are named here: without them a
# machine with no GPU has no OpenGL to render with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libegl-mesa0, libgl1-mesa-dri")
include(CPack)
