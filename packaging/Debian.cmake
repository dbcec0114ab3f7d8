# How CPack makes the Debian package from what is installed.
set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME zek-velmora-installer)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "ZEK Velmora Installer maintainers <maintainers@zek.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "installer of ZEK Velmora and the driver of its dock")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Installs the login agent \"ZEK Velmora\" for the user who asks for it, and
for the whole computer the driver of the dock's high-powered ports. Keeps
both up to date and takes them away again.

It opens windows, or works unattended for scripts. Administrator rights,
which only the driver needs, are asked for through polkit.")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

# Part of what is installed lies outside the prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/FolderModes.cmake)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/postrm)

# Beside the libraries: programs that are started, and the reader of the images, which is loaded.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "pkexec, polkitd, procps, qt6-image-formats-plugins")
# Whoever lacks these still has the unattended mode, or can do without the links.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "dbus-user-session | dbus-session-bus, lxpolkit | polkit-1-auth-agent, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "apfsprogs, dosfstools, exfatprogs, fonts-noto-cjk | fonts-wqy-microhei, qt6-wayland, udisks2, xdg-desktop-portal")

include(CPack)
