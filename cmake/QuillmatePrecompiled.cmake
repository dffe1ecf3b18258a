# Headers of the libraries that are compiled once for the whole tree instead of once for each file. They are for speed alone:
# a file still names what it uses, and -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds the same.

# quillmate_precompiled(NAME LINKS … HEADERS …): one such set, for the targets that have at least these links.
function(quillmate_precompiled name)
  cmake_parse_arguments(ARG "" "" "LINKS;HEADERS" ${ARGN})
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(${name} OBJECT "${source}")
  target_link_libraries(${name} PRIVATE quillmate_options ${ARG_LINKS})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

set(_standard
  <algorithm> <array> <atomic> <chrono> <functional> <map> <memory> <mutex> <optional> <string> <string_view> <thread> <utility>
  <variant> <vector>)
set(_core
  ${_standard} <QByteArray> <QCoreApplication> <QDateTime> <QDir> <QFile> <QJsonArray> <QJsonDocument> <QJsonObject> <QObject>
  <QPointer> <QRegularExpression> <QSet> <QString> <QStringList> <QThread> <QTimer> <QUrl>)
set(_quick
  ${_core} <QAbstractListModel> <QColor> <QGuiApplication> <QImage> <QQmlComponent> <QQmlEngine> <QQuickItem> <QQuickWindow>
  <qqmlregistration.h>)
set(_test <QElapsedTimer> <QProcess> <QSignalSpy> <QTemporaryDir> <QTest>)

# The compiler takes a set only for files with the same definitions. Those of Qt Test name the folder of each target, for a main
# function that no test here uses; GMime's say what holds on this system anyway.
set_target_properties(Qt6::Test PROPERTIES INTERFACE_COMPILE_DEFINITIONS QT_TESTLIB_LIB)
get_target_property(_options PkgConfig::GMIME INTERFACE_COMPILE_OPTIONS)
list(REMOVE_ITEM _options -D_LARGEFILE64_SOURCE -pthread)
set_target_properties(PkgConfig::GMIME PROPERTIES INTERFACE_COMPILE_OPTIONS "${_options}")

quillmate_precompiled(quillmate_precompiled_core LINKS Qt6::Core HEADERS ${_core})
quillmate_precompiled(quillmate_precompiled_quick LINKS Qt6::Quick HEADERS ${_quick})
quillmate_precompiled(quillmate_precompiled_test LINKS Qt6::Network Qt6::Test HEADERS ${_core} ${_test})
quillmate_precompiled(quillmate_precompiled_quick_test LINKS Qt6::Quick Qt6::Test HEADERS ${_quick} ${_test})

# _quillmate_reaches(TARGET LIBRARY VARIABLE): sets the variable when the target links the library, itself or through others.
function(_quillmate_reaches target library variable)
  get_target_property(links ${target} LINK_LIBRARIES)
  get_target_property(interface ${target} INTERFACE_LINK_LIBRARIES)
  if(NOT links)
    set(links "")
  endif()
  if(interface)
    list(APPEND links ${interface})
  endif()
  list(REMOVE_DUPLICATES links)
  foreach(link ${links})
    if(link STREQUAL library)
      set(${variable} TRUE PARENT_SCOPE)
      return()
    endif()
    if(TARGET ${link} AND link MATCHES "^quillmate_")
      _quillmate_reaches(${link} ${library} found)
      if(found)
        set(${variable} TRUE PARENT_SCOPE)
        return()
      endif()
    endif()
  endforeach()
endfunction()

# quillmate_precompile(TARGET): the target, whose links are known by now, takes the largest set that it may; none without Qt.
function(quillmate_precompile target)
  set(set quillmate_precompiled)
  _quillmate_reaches(${target} Qt6::Quick quick)
  if(quick)
    string(APPEND set _quick)
  endif()
  _quillmate_reaches(${target} Qt6::Test test)
  if(test)
    string(APPEND set _test)
  elseif(NOT quick)
    _quillmate_reaches(${target} Qt6::Core core)
    if(NOT core)
      return()
    endif()
    string(APPEND set _core)
  endif()
  target_precompile_headers(${target} REUSE_FROM ${set})
endfunction()
