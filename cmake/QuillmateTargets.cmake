# How the tree's libraries, programs and tests are declared.

# quillmate_folder(TARGET SCOPE): the target is this folder of src/, and who links it can include the folder's headers, named
# from src/ on. Nobody else can: the include path holds a folder that holds nothing but a link to this one.
function(quillmate_folder target scope)
  file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}/src" "${CMAKE_CURRENT_SOURCE_DIR}")
  set(root "${CMAKE_BINARY_DIR}/include/${target}")
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY "${root}/${parent}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${root}/${folder}" SYMBOLIC)
  target_include_directories(${target} ${scope} "${root}")
endfunction()

# quillmate_library(NAME SOURCES … LINKS … [PRIVATE_LINKS …]): the library of the folder it is declared in
function(quillmate_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  # Several files in one halve the work of those builds, which nobody edits against; the release build holds each file to its
  # own includes.
  set_target_properties(${name} PROPERTIES AUTOMOC ON UNITY_BUILD "${QUILLMATE_SANITIZED}")
  quillmate_folder(${name} PUBLIC)
  target_link_libraries(${name} PUBLIC quillmate_options ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
  quillmate_precompile(${name})
endfunction()

# quillmate_program(NAME SOURCES … LINKS …)
function(quillmate_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  qt_add_executable(${name} MANUAL_FINALIZATION ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE quillmate_options ${ARG_LINKS})
  quillmate_precompile(${name})
  target_compile_definitions(${name} PRIVATE QUILLMATE_VERSION="${PROJECT_VERSION}")
  qt_finalize_executable(${name})
endfunction()

# quillmate_tests(NAME SOURCES … LINKS … [TIMEOUT SECONDS]): the test program of a folder. Each …Test.cpp of it is a test of
# that name under ctest, in a process of its own, on the offscreen platform.
function(quillmate_tests name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(QUILLMATE_SANITIZE AND ARG_TIMEOUT LESS 300)
    set(ARG_TIMEOUT 300) # The sanitizers make some programs ten times as slow.
  endif()
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  target_link_libraries(${name} PRIVATE quillmate_options quillmate_test_program Qt6::Test ${ARG_LINKS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PRIVATE -Wno-stringop-overflow) # As -Wno-array-bounds, for long made-up texts.
  endif()
  quillmate_precompile(${name})
  foreach(source ${ARG_SOURCES})
    if(source MATCHES "([A-Za-z]+Test)\\.cpp$")
      set(test ${CMAKE_MATCH_1})
      add_test(NAME ${test} COMMAND ${name} ${test})
      set_tests_properties(${test} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
    endif()
  endforeach()
endfunction()

# quillmate_flat_qml(FILE…): the files' types lie beside one another in their module, whatever folders the files are in.
function(quillmate_flat_qml)
  foreach(file ${ARGN})
    cmake_path(GET file FILENAME name)
    set_source_files_properties(${file} PROPERTIES QT_RESOURCE_ALIAS ${name})
  endforeach()
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
