# What the packages of a build are called and who looks after them. A build for a service of one's own has a name of its own,
# and stands in the place of the package it was made after.

set(QUILLMATE_PACKAGE_NAME "" CACHE STRING
  "Name of the Debian package; empty: quillmate, or quillmate- and the live host where that is one's own")
set(QUILLMATE_PACKAGE_MAINTAINER "" CACHE STRING
  "Name and address of the one who maintains the package; empty: maintainers@ and the live host")

set(QUILLMATE_PACKAGE_NAME_USED "${QUILLMATE_PACKAGE_NAME}")
if(QUILLMATE_PACKAGE_NAME_USED STREQUAL "")
  string(TOLOWER "${QUILLMATE_LIVE_HOST}" _host)
  set(QUILLMATE_PACKAGE_NAME_USED "quillmate")
  if(NOT _host STREQUAL "quillmate.example")
    string(REPLACE "." "-" _host "${_host}")
    string(APPEND QUILLMATE_PACKAGE_NAME_USED "-${_host}")
  endif()
endif()
# Debian Policy, section 5.6.1.
if(NOT "${QUILLMATE_PACKAGE_NAME_USED}" MATCHES "^[a-z0-9][a-z0-9+.-]+$")
  message(FATAL_ERROR "QUILLMATE_PACKAGE_NAME is \"${QUILLMATE_PACKAGE_NAME_USED}\", which is no name of a Debian package: "
    "give at least two of a-z, 0-9, +, - and ., the first a letter or a digit, for example "
    "QUILLMATE_PACKAGE_NAME=quillmate-example")
endif()

set(QUILLMATE_PACKAGE_MAINTAINER_USED "${QUILLMATE_PACKAGE_MAINTAINER}")
if(QUILLMATE_PACKAGE_MAINTAINER_USED STREQUAL "")
  set(QUILLMATE_PACKAGE_MAINTAINER_USED "Quillmate maintainers <maintainers@${QUILLMATE_LIVE_HOST}>")
endif()
if(NOT "${QUILLMATE_PACKAGE_MAINTAINER_USED}" MATCHES "^[^<>@,\n]*[^<>@, \n] <[^<>@, \n]+@[^<>@, \n]+>$")
  message(FATAL_ERROR "QUILLMATE_PACKAGE_MAINTAINER is \"${QUILLMATE_PACKAGE_MAINTAINER_USED}\": give a name and an address, "
    "for example \"Ana Example <ana@service.example>\"")
endif()
