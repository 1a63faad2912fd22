# cpack -G DEB: a Debian package of the program, its codec folder, help, menu entry, software-centre
# description and man pages.
set(CPACK_PACKAGE_NAME kestrelvane)
set(CPACK_PACKAGE_VENDOR "Kestrelvane developers")
set(CPACK_PACKAGE_CONTACT "Kestrelvane developers <kestrelvane@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "browse audio folders and convert between WAV, MP3, Ogg Vorbis and Musepack")
set(CPACK_PACKAGE_DESCRIPTION
    "Kestrelvane lists the WAV, MP3, Ogg Vorbis and Musepack files of a folder with what their "
    "headers tell, forecasts the size of an encoding, and converts files with the command-line "
    "codecs lame, oggenc and mpcenc (and back to WAV), as many at once as there are processors. "
    "kestrelvane-cli does the same without a window.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://kestrelvane.invalid/")
# The Qt libraries the executables link come from dpkg-shlibdeps; the rest is started or loaded
# by name: the codecs of the codec folder, the players, and the picture plug-in of the icons.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "lame, madplay, vorbis-tools, musepack-tools, alsa-utils, libqt6svg6")
# The Help panel hands its document to the desktop's browser.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
include(CPack)
