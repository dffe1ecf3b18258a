# The three service hosts of a build. An origin is always https:// and the host, so a value must be a bare host name.

set(QUILLMATE_LIVE_HOST "quillmate.example" CACHE STRING "Host of the live service")
set(QUILLMATE_STAGING_HOST "staging.quillmate.example" CACHE STRING "Host of the staging service")
set(QUILLMATE_DEV_HOST "quillmate-dev.test" CACHE STRING "Host of the development service")

set(_label "[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?")
foreach(_name QUILLMATE_LIVE_HOST QUILLMATE_STAGING_HOST QUILLMATE_DEV_HOST)
  if(NOT "${${_name}}" MATCHES "^${_label}(\\.${_label})*$")
    message(FATAL_ERROR "${_name} is \"${${_name}}\", which is not a bare host name: "
      "give it without scheme, port, path or blanks, for example ${_name}=service.example.org")
  endif()
endforeach()
