# One line per library, part or test: its name, its sources, what it stands on.

# orvo_shared(<target> SOURCES ... LINK ...): a shared platform library with Qt's moc.
function(orvo_shared target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(${target} SHARED ${ARG_SOURCES})
  set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON)
  target_link_libraries(${target} PUBLIC ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  orvo_reuse(${target} orvo_pch_widgets)
endfunction()

# orvo_static(<target> SOURCES ... LINK ...): a static library.
function(orvo_static target)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${target} STATIC ${ARG_SOURCES})
  target_link_libraries(${target} PUBLIC ${ARG_LINK})
endfunction()

# orvo_menu_part(<name> SOURCES ...): one folder of libOrvoMenu.so. Its objects go into the library
# and, linked once more, into the tests.
set_property(GLOBAL PROPERTY ORVO_MENU_PARTS "")
function(orvo_menu_part name)
  cmake_parse_arguments(ARG "" "" "SOURCES" ${ARGN})
  set(target orvomenu_${name})
  add_library(${target} OBJECT ${ARG_SOURCES})
  set_target_properties(${target} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON)
  target_link_libraries(${target} PUBLIC OrvoClient OrvoMdx Qt::Widgets orvo_qt_codec)
  orvo_reuse(${target} orvo_pch_widgets)
  set_property(GLOBAL APPEND PROPERTY ORVO_MENU_PARTS ${target})
endfunction()

# The module library, and the same objects as orvomenu_objects for the tests.
function(orvo_menu_library)
  get_property(parts GLOBAL PROPERTY ORVO_MENU_PARTS)
  add_library(orvomenu_objects INTERFACE)
  add_library(OrvoMenu MODULE)
  foreach(part ${parts})
    target_sources(orvomenu_objects INTERFACE $<TARGET_OBJECTS:${part}>)
    target_sources(OrvoMenu PRIVATE $<TARGET_OBJECTS:${part}>)
  endforeach()
  target_link_libraries(orvomenu_objects INTERFACE OrvoClient OrvoMdx Qt::Widgets orvo_qt_codec)
  target_link_libraries(OrvoMenu PRIVATE OrvoClient OrvoMdx Qt::Widgets orvo_qt_codec)
  target_link_options(OrvoMenu PRIVATE
    "LINKER:--version-script=${CMAKE_SOURCE_DIR}/frame/exports.map")
  set_target_properties(OrvoMenu PROPERTIES LINK_DEPENDS "${CMAKE_SOURCE_DIR}/frame/exports.map")
  orvo_install(OrvoMenu "${ORVO_MODULE_DIR}" client)
endfunction()

# The sample of a module library, built as if it were somebody else's; installed as sources.
function(orvo_sample_library)
  foreach(library OrvoClient OrvoMdx)
    add_library(Orvo::${library} ALIAS ${library})
  endforeach()
  add_subdirectory(examples/modules)
  set_target_properties(OrvoSample PROPERTIES UNITY_BUILD OFF
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/examples/modules")
  install(DIRECTORY examples/modules DESTINATION "${CMAKE_INSTALL_DATADIR}/orvo/examples" COMPONENT dev)
endfunction()

# orvo_moc(<target> <source>...): moc for those of a test's files that hold a QObject. AUTOMOC would
# start CMake and compile one more file for each of 200 tests.
function(orvo_moc target)
  set(directory "${CMAKE_CURRENT_BINARY_DIR}/${target}_moc")
  target_include_directories(${target} PRIVATE "${directory}")
  foreach(source ${ARGN})
    if(source MATCHES "^\\$<")
      continue()
    endif()
    file(STRINGS ${source} found REGEX "Q_OBJECT" LIMIT_COUNT 1)
    if(NOT found)
      continue()
    endif()
    get_filename_component(name ${source} NAME_WE)
    set(output "${directory}/${name}.moc")
    if(source MATCHES "\\.h$")
      set(output "${directory}/moc_${name}.cpp")
    endif()
    qt_generate_moc(${source} "${output}" TARGET ${target})
    target_sources(${target} PRIVATE "${output}")
  endforeach()
endfunction()

# orvo_test(<name> SOURCES ... LINK ... [LABELS ...] [XVFB] [POSTGRES]): one QtTest executable, run
# by CTest without a display, or with one of its own (XVFB). POSTGRES: run once more as
# <name>_postgres on a PostgreSQL store; one cluster serves all of those.
function(orvo_test name)
  cmake_parse_arguments(ARG "XVFB;POSTGRES" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  target_link_libraries(${name} PRIVATE ${ARG_LINK} Qt::Test)
  orvo_moc(${name} ${ARG_SOURCES})
  if(ORVO_PRECOMPILE AND "${ARG_LINK}" MATCHES "client_parts|scene")
    orvo_reuse(${name} orvo_pch_client_test)
  elseif(NOT ORVO_PRECOMPILE OR "${ARG_LINK}" MATCHES "Gui|Network")
    # Qt's test header looks at the definitions of these modules: a set for two tests would not pay.
    target_compile_options(${name} PRIVATE "SHELL:-include ${CMAKE_SOURCE_DIR}/tests/Waits.h")
  elseif("${ARG_LINK}" MATCHES "orvomenu|OrvoClient|host_fixture|Widgets|modules_fixture|test_trees")
    orvo_reuse(${name} orvo_pch_widgets_test)
  else()
    orvo_reuse(${name} orvo_pch_test)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  orvo_run(${name} ${name} ${ARG_XVFB} ${ARG_TIMEOUT} "${ARG_LABELS}")
  if(ARG_POSTGRES)
    orvo_run(${name}_postgres ${name} ${ARG_XVFB} ${ARG_TIMEOUT} "${ARG_LABELS};postgres")
    set_property(TEST ${name}_postgres APPEND PROPERTY ENVIRONMENT
      ORVO_STORE_KIND=postgresql "ORVO_PG_CLUSTER=${CMAKE_BINARY_DIR}/pg-cluster.path")
    set_tests_properties(${name}_postgres PROPERTIES FIXTURES_REQUIRED postgres)
  endif()
endfunction()

# orvo_postgres_fixture(): starts the cluster of the <name>_postgres tests before the first of them
# and stops it after the last.
function(orvo_postgres_fixture)
  foreach(verb start stop)
    add_test(NAME postgres_${verb} COMMAND "${CMAKE_SOURCE_DIR}/scripts/pg-fixture" ${verb}
      "${CMAKE_BINARY_DIR}/pg-cluster.path")
  endforeach()
  set_tests_properties(postgres_start PROPERTIES FIXTURES_SETUP postgres)
  set_tests_properties(postgres_stop PROPERTIES FIXTURES_CLEANUP postgres)
endfunction()

# One run of a test's executable; for orvo_test.
function(orvo_run name target xvfb timeout labels)
  if(xvfb)
    add_test(NAME ${name} COMMAND "${CMAKE_SOURCE_DIR}/scripts/with-display" $<TARGET_FILE:${target}>)
  else()
    add_test(NAME ${name} COMMAND ${target})
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT QT_QPA_PLATFORM=offscreen)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} LABELS "${labels}")
  if(ORVO_COST_${name})
    set_tests_properties(${name} PROPERTIES COST ${ORVO_COST_${name}})
  endif()
  # Qt and the X libraries keep caches until exit; leaks of our own are found by the suppressions'
  # narrowness: they name those libraries only.
  set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1"
    "XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/tests/config/${name}"
    "ORVO_BIN_DIR=${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
    "ORVO_LIB_DIR=${CMAKE_LIBRARY_OUTPUT_DIRECTORY}"
    "ORVO_MODULE_DIR=${CMAKE_BINARY_DIR}/${ORVO_MODULE_DIR}"
    "ORVO_PROGRAM_DIR=${CMAKE_BINARY_DIR}/${ORVO_PROGRAM_DIR}"
    "ORVO_SOURCE_DIR=${CMAKE_SOURCE_DIR}"
    "ORVO_LANG=ru") # whatever the developer's desktop speaks
endfunction()
