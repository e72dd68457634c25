# The libraries of the fixtures, which the benchmarks and the pictures of the documentation link as
# well. Each is built when something needs it.

# orvo_fixture(<name> FOLDER ... SOURCES ... LINK ...): sources of one folder of tests/.
function(orvo_fixture name)
  cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;LINK" ${ARGN})
  list(TRANSFORM ARG_SOURCES PREPEND "${CMAKE_SOURCE_DIR}/tests/${ARG_FOLDER}/")
  add_library(${name} STATIC EXCLUDE_FROM_ALL ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LINK})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
endfunction()

find_package(PostgreSQL REQUIRED)

# A server of one's own.
orvo_fixture(orvo_test_postgres FOLDER store SOURCES PostgresCluster.cpp LINK orvo_store)
# Stores of each kind, proxies, comparisons.
orvo_fixture(store_test FOLDER store
  SOURCES StoreTest.cpp StoreKinds.cpp Batch.cpp LogReplay.cpp PostgresProxy.cpp PostgresTest.h
  LINK orvo_test_postgres orvo_store Qt::Test)
# The store, session and module that the client's tests share.
orvo_fixture(orvo_host_fixture FOLDER client
  SOURCES HostFixture.cpp HostFixture.h
  LINK store_test OrvoClient OrvoMdx orvo_store Qt::Widgets Qt::Test)
# Real windows over a real store.
orvo_fixture(orvo_test_write_watch FOLDER menu
  SOURCES WriteWatch.cpp LINK OrvoMdx orvo_store Qt::Core)
orvo_fixture(orvo_test_modules_fixture FOLDER menu
  SOURCES ModuleFixture.cpp Notices.cpp LINK orvo_test_write_watch store_test OrvoClient Qt::Widgets)
# The demonstration installation with clients on it, driven by mouse and keyboard.
orvo_fixture(orvo_scene FOLDER e2e
  SOURCES ClientProcess.cpp Hands.cpp StoreView.cpp Scene.cpp
  LINK store_test Qt::Widgets Qt::Network SQLite::SQLite3 PostgreSQL::PostgreSQL)
