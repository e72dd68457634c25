#include "apps/client/HostApp.h"

#include "frame/Keys.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <QAction>
#include <QMenu>

#include <cstring>

namespace orvo::app {

namespace {

constexpr int callRun = 64;

/// What a module hands over with callRun: three machine words.
struct RunBlock {
    void* reserved;
    const char* command;  ///< zero-terminated
    const char* argument; ///< zero-terminated, Windows-1251
};

/// Whether a row's key is that of a row without a record.
bool isFixedKey(const QString& key) {
    for (const char* fixed :
         {rowkey::desktops, rowkey::elements, rowkey::resources, rowkey::files, rowkey::orphans})
        if (key.compare(QLatin1String(fixed), Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

} // namespace

QString usesEntry(const QString& table) {
    if (table == QLatin1String(table::MenuResource))
        return Text::tr("Где используется");
    if (table == QLatin1String(table::Menu))
        return Text::tr("Где используется ресурс");
    return table == QLatin1String(table::Users) ? Text::tr("Что заблокировано") : QString();
}

void HostApp::log(int level, const QString& place, const QString& text) {
    emit logged(level, place, text);
}

QString HostApp::markKey(const QString& table, const QString& key) {
    return table + QLatin1Char('/') + key.toCaseFolded();
}

RecordMark HostApp::recordMark(const QString& table, const QString& key) const {
    const QString record = markKey(table, key);
    RecordMark mark = m_marks.value(record);
    if (const QString what = m_unwritten.value(record); !what.isEmpty()) {
        const auto put = [](QString& text, const QString& first, const char* between) {
            text = text.isEmpty() ? first : first + QLatin1String(between) + text;
        };
        put(mark.label, Text::tr("не записано"), ", ");
        put(mark.tip, Text::tr("Не записано: %1 (Shift+F8)").arg(what), "\n");
    }
    return mark;
}

void HostApp::addRecordActions(QMenu* menu, const QString& table, const QString& key) {
    if (key.isEmpty() || isFixedKey(key))
        return;
    menu->addSeparator();
    const auto add = [&](const char* command, const QString& text, const auto& run) {
        QAction* action = menu->addAction(text);
        action->setProperty(keys::commandProperty, QLatin1String(command));
        // Shown only: the key is taken by the tree.
        action->setShortcutContext(Qt::WidgetShortcut);
        action->setShortcuts(keys::sequences(*keys::command(QLatin1String(command))));
        // Queued: the menu is closed and its loop left before anything is shown.
        connect(action, &QAction::triggered, this, run, Qt::QueuedConnection);
    };
    const auto addOwn = [&](const char* command, const auto& run) {
        add(command, keys::text(*keys::command(QLatin1String(command))), run);
    };
    addOwn(keys::rowHistory, [this, table, key] { emit historyRequested(table, key, false); });
    if (table == QLatin1String(orvo::table::MenuResource))
        addOwn(keys::versions, [this, key] { emit versionsRequested(key); });
    else
        addOwn(keys::branchHistory,
               [this, table, key] { emit historyRequested(table, key, true); });
    if (const QString uses = usesEntry(table); !uses.isEmpty())
        add(keys::uses, uses, [this, table, key] {
            ShowUsesRequest request{table, key};
            emit showUsesRequested(&request);
        });
}

QStringList HostApp::markedRecords() const {
    QStringList all;
    for (auto mark = m_marks.begin(); mark != m_marks.end(); ++mark)
        all << QStringLiteral("%1: %2").arg(mark.key(), mark->label);
    all.sort();
    return all;
}

void HostApp::moduleTitle(COrvoCliMod* module, const QString& title, const QString& second) {
    emit titleChanged(module,
                      second.isEmpty() ? title : QStringLiteral("%1 — %2").arg(title, second));
}

void HostApp::moduleCall(COrvoCliMod* module, int code, void* data) {
    if (data && code == callLaunch)
        return emit launchRequested(static_cast<LaunchRequest*>(data));
    if (data && code == callCheckLaunch)
        return emit launchChecked(static_cast<LaunchRequest*>(data));
    if (data && code == callPreview)
        return emit previewRequested(static_cast<PreviewRequest*>(data));
    if (data && code == callPreviewEdit)
        return emit previewEdited(*static_cast<PreviewEdit*>(data));
    if (data && code == callLog)
        return emit logRequested(static_cast<LogRequest*>(data));
    if (data && code == callUses)
        return emit usesRequested(static_cast<UsesRequest*>(data));
    if (data && code == callShowUses)
        return emit showUsesRequested(static_cast<ShowUsesRequest*>(data));
    if (data && code == callHandbook)
        return emit handbookRequested(static_cast<HandbookRequest*>(data));
    const auto* block = static_cast<const RunBlock*>(data);
    if (code == callRun && block && block->command && block->argument &&
        std::strcmp(block->command, orvo::runFileCommand) == 0) {
        emit formRequested(QString::fromStdString(mdx::toUtf8(block->argument)));
        return;
    }
    emit logged(5, module ? module->m_moduleName : QString(),
                Text::tr("Неизвестная команда приложению, код %1.").arg(code));
}

} // namespace orvo::app
