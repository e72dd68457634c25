# Qt's headers are most of what a source of ours is to the compiler (2.6 of 4.0 s in menu/Editing.cpp).
# They are compiled once for each set of definitions and reused. Nothing of ours goes into them: a
# changed header of ours must not rebuild everything, and a source that lacks an include is found by
# the presets that build without (tidy, fuzz).
option(ORVO_PRECOMPILE "Precompile the headers of Qt" ON)

# orvo_precompiled(<name> HEADERS ... LINK ...): a set of headers, as seen by what links just that.
function(orvo_precompiled name)
  cmake_parse_arguments(ARG "" "" "HEADERS;LINK" ${ARGN})
  add_library(${name} OBJECT "${CMAKE_SOURCE_DIR}/cmake/precompiled.cpp")
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# orvo_reuse(<target> <set>): compiles the target with the headers of the set.
function(orvo_reuse target set)
  if(ORVO_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${set})
  endif()
endfunction()

if(ORVO_PRECOMPILE)
  set(standard <algorithm> <functional> <map> <memory> <optional> <set> <string> <unordered_map> <vector>)
  set(widgets ${standard} <QAction> <QApplication> <QClipboard> <QDateTime> <QDir> <QElapsedTimer>
    <QFile> <QFileInfo> <QItemSelectionModel> <QJsonDocument> <QJsonObject> <QLabel> <QLineEdit>
    <QMainWindow> <QMenu> <QMimeData> <QPointer> <QProcess> <QPushButton> <QRegularExpression>
    <QSet> <QStandardItemModel> <QStringList> <QTemporaryDir> <QThread> <QTimer> <QToolBar>
    <QToolButton> <QTreeView> <QVBoxLayout> <QVariant> <QVector>)
  orvo_precompiled(orvo_pch_widgets HEADERS ${widgets} LINK Qt::Widgets)
  if(ORVO_TESTS)
    set(waits "${CMAKE_SOURCE_DIR}/tests/Waits.h") # QtTest, and what hardly ever changes
    orvo_precompiled(orvo_pch_test HEADERS ${standard} ${waits} LINK Qt::Test)
    orvo_precompiled(orvo_pch_widgets_test HEADERS ${widgets} ${waits} LINK Qt::Widgets Qt::Test)
    # Qt's test header includes more where QT_NETWORK_LIB is defined.
    orvo_precompiled(orvo_pch_client_test HEADERS ${widgets} ${waits} LINK Qt::Network Qt::Widgets Qt::Test)
  endif()
endif()
