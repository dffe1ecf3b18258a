# The version of a build: what every program prints, what the version check sends and what the packages are named after.

set(QUILLMATE_VERSION "" CACHE STRING "Version of the build, numbers with dots between them; empty: that of these sources")

set(QUILLMATE_VERSION_USED "${QUILLMATE_VERSION}")
if(QUILLMATE_VERSION_USED STREQUAL "")
  set(QUILLMATE_VERSION_USED "1.0.0")
endif()

# The add-on's manifest is the narrowest of those who read it: at most four numbers, none with a zero before it and none of
# more than nine digits.
set(_number "(0|[1-9][0-9]?[0-9]?[0-9]?[0-9]?[0-9]?[0-9]?[0-9]?[0-9]?)")
string(REPLACE "." ";" _numbers "${QUILLMATE_VERSION_USED}")
list(LENGTH _numbers _count)
if(NOT "${QUILLMATE_VERSION_USED}" MATCHES "^${_number}(\\.${_number})*$" OR _count GREATER 4)
  message(FATAL_ERROR "QUILLMATE_VERSION is \"${QUILLMATE_VERSION}\", which is not a bare dotted version: "
    "give one to four numbers with dots between them, for example QUILLMATE_VERSION=1.2.0")
endif()
