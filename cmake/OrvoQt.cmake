# The one place that knows the version of Qt. Everything else links Qt::Core, Qt::Widgets and so on,
# which either version provides.
set(ORVO_QT 5 CACHE STRING "Major version of Qt: 5 or 6")
set_property(CACHE ORVO_QT PROPERTY STRINGS 5 6)
if(ORVO_QT EQUAL 5)
  set(ORVO_QT_VERSION 5.15)
elseif(ORVO_QT EQUAL 6)
  set(ORVO_QT_VERSION 6.4)
  # Sources are written in what both versions have, and part of that is deprecated in Qt 6.
  add_compile_definitions(QT_DEPRECATED_WARNINGS_SINCE=0x050f00)
else()
  message(FATAL_ERROR "ORVO_QT is ${ORVO_QT}; it can be 5 or 6")
endif()

# orvo_find_qt(<component>...): components that hold for the directory and those below.
macro(orvo_find_qt)
  find_package(Qt${ORVO_QT} ${ORVO_QT_VERSION} REQUIRED COMPONENTS ${ARGN})
endmacro()

orvo_find_qt(Core DBus Gui Network Widgets UiTools Test)
# The build directory in a definition would keep the compiler cache from serving another clone.
set_property(TARGET Qt${ORVO_QT}::Test PROPERTY INTERFACE_COMPILE_DEFINITIONS QT_TESTLIB_LIB)

# QTextCodec, of which the published interface has members.
if(ORVO_QT EQUAL 6)
  orvo_find_qt(Core5Compat)
  add_library(orvo_qt_codec ALIAS Qt6::Core5Compat)
else()
  add_library(orvo_qt_codec ALIAS Qt5::Core)
endif()

# Private headers of Qt's widgets (qtbase5-private-dev), as far as they are there. Those of Qt 6 are
# not looked at: nobody has tried yet whether orvo::TreeView can follow the rows in its list. With Qt 6
# it is a plain view, and slower with a million rows.
set(ORVO_QT_PRIVATE_HEADERS "${Qt5Widgets_PRIVATE_INCLUDE_DIRS}")

# orvo_secret_service(<target>): links qtkeychain, whose header is <keychain.h>.
function(orvo_secret_service target)
  find_package(Qt${ORVO_QT}Keychain REQUIRED)
  find_path(ORVO_KEYCHAIN_HEADERS_QT${ORVO_QT} keychain.h PATH_SUFFIXES qt${ORVO_QT}keychain REQUIRED)
  target_include_directories(${target} SYSTEM PRIVATE "${ORVO_KEYCHAIN_HEADERS_QT${ORVO_QT}}")
  target_link_libraries(${target} PUBLIC qt${ORVO_QT}keychain)
endfunction()
