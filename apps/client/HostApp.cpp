#include "apps/client/HostApp.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

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

} // namespace

void HostApp::log(int level, const QString& place, const QString& text) {
    emit logged(level, place, text);
}

QString HostApp::markKey(const QString& table, const QString& key) {
    return table + QLatin1Char('/') + key.toCaseFolded();
}

RecordMark HostApp::recordMark(const QString& table, const QString& key) const {
    return m_marks.value(markKey(table, key));
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
    const auto* block = static_cast<const RunBlock*>(data);
    if (code == callRun && block && block->command && block->argument &&
        std::strcmp(block->command, orvo::runFileCommand) == 0) {
        emit formRequested(QString::fromStdString(mdx::toUtf8(block->argument)));
        return;
    }
    emit logged(5, module ? module->m_moduleName : QString(),
                QStringLiteral("Неизвестная команда приложению, код %1.").arg(code));
}

} // namespace orvo::app
