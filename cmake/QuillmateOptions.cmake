# Warnings, sanitizers and the other switches that every target of the tree shares.

set(QUILLMATE_SANITIZE "" CACHE STRING "Sanitizers to build with, as the compiler's -fsanitize takes them")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# What CMake takes for these is slower to build and no faster to run: -O3, and -O2 -g for what a sanitizer slows down anyway.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
set(QUILLMATE_SANITIZED OFF)
if(QUILLMATE_SANITIZE)
  set(QUILLMATE_SANITIZED ON)
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1 -DNDEBUG")
  set(QUILLMATE_QML_MODULE NO_CACHEGEN) # What is generated of the views is not ours to look at.
endif()

add_library(quillmate_options INTERFACE)
target_compile_options(quillmate_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# GCC 12 sees overlapping copies, and with -O2 copies past the end, in `"literal" + string` (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(quillmate_options INTERFACE -Wno-restrict -Wno-array-bounds)
endif()
target_compile_definitions(quillmate_options INTERFACE
  QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)

if(QUILLMATE_SANITIZE)
  add_compile_options(-fsanitize=${QUILLMATE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=${QUILLMATE_SANITIZE})
  # GCC 12 reports false positives of these two when it instruments.
  add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow)
  add_compile_definitions(QUILLMATE_SANITIZED)
endif()

# What is handed out is hardened as Debian hardens its own programs; the sanitizers bring checks of their own, which these
# would hide.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT QUILLMATE_SANITIZE)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  # Defined by some compilers already, to another value.
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection
    -Wformat -Werror=format-security "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|i.86")
    add_compile_options(-fcf-protection)
  endif()
  add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()
