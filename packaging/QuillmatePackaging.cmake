# The Debian package, as CPack makes it of what is installed.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME "${QUILLMATE_PACKAGE_NAME_USED}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${QUILLMATE_PACKAGE_MAINTAINER_USED}")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION mail)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://${QUILLMATE_LIVE_HOST}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"While you write a reply, a panel beside the compose window shows a summary
of the message you are replying to, drafts replies that you can regenerate
and copy, and holds a chat about the message, kept per message.

This package holds the panel with its add-on for Thunderbird, a small mail
window to try it in, a stand-alone chat window, and an assistant service to
run on one's own machine.")

# dpkg-shlibdeps finds what is linked; the rest is found while running: the modules that the views import, the pictures'
# format, and the program that opens the sign-in page in the browser.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
string(JOIN ", " CPACK_DEBIAN_PACKAGE_DEPENDS
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
  qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-templates qml6-module-qtquick-window
  xdg-utils)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "thunderbird (>= 1:128), fonts-dejavu-core | fonts-freefont-ttf, qt6-wayland")

if(NOT QUILLMATE_PACKAGE_NAME_USED STREQUAL "quillmate")
  set(CPACK_DEBIAN_PACKAGE_PROVIDES "quillmate (= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_PACKAGE_CONFLICTS "quillmate")
  set(CPACK_DEBIAN_PACKAGE_REPLACES "quillmate")
endif()

include(CPack)
