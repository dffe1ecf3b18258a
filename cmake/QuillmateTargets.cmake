# How the tree's libraries, programs and tests are declared.

# quillmate_library(NAME SOURCES … LINKS … [PRIVATE_LINKS …])
function(quillmate_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PUBLIC quillmate_options ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
endfunction()

# quillmate_program(NAME SOURCES … LINKS …)
function(quillmate_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  qt_add_executable(${name} MANUAL_FINALIZATION ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE quillmate_options ${ARG_LINKS})
  target_compile_definitions(${name} PRIVATE QUILLMATE_VERSION="${PROJECT_VERSION}")
  qt_finalize_executable(${name})
endfunction()

# quillmate_test(NAME SOURCES … LINKS … [TIMEOUT SECONDS]): a Qt Test program that ctest runs on the offscreen platform.
function(quillmate_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(QUILLMATE_SANITIZE AND ARG_TIMEOUT LESS 300)
    set(ARG_TIMEOUT 300) # The sanitizers make some programs ten times as slow.
  endif()
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE quillmate_options Qt6::Test ${ARG_LINKS})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()

# quillmate_generated_qml(TARGET): what qmlcachegen writes for a QML module is not ours to warn about.
function(quillmate_generated_qml target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "/\\.rcc/|_qmltyperegistrations")
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "-w")
  if(TARGET ${target}_qmlcache)
    target_compile_options(${target}_qmlcache PRIVATE -w)
  endif()
endfunction()
