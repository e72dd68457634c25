#include "apps/client/RecordJump.h"

#include "apps/client/CloseGuard.h"
#include "apps/client/KnownModules.h"
#include "apps/client/LogPane.h"
#include "apps/client/MainWindow.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordSource.h"
#include "platform/client/Attention.h"

#include <QApplication>

#include <optional>
#include <utility>

namespace orvo::app {

RecordJump::RecordJump(Context context) : m_context(std::move(context)) {}

QString RecordJump::whyAnswerFirst() const {
    for (const QPointer<COrvoCliMod>& module :
         m_context.modules.modules(client::ModuleState::Running)) {
        const client::Attention attention = client::attentionIn(*module);
        if (attention == client::Attention::Question || attention == client::Attention::Picker)
            return Text::tr("сначала ответьте на вопрос: %1").arg(module->windowTitle());
    }
    return {};
}

/// The record may have gone since, and an element may stand in another menu now.
void RecordJump::lookUp(const QString& table, const QString& key, const Take& take) {
    auto desktop = std::make_shared<std::optional<QString>>();
    m_context.thread.run(
        this,
        [desktop, name = table.toStdString(),
         wanted = key.toStdString()](store::MaintainedStore& store) {
            const store::TableDef* def = history::tableOf(name);
            std::map<std::string, std::vector<store::Value>> rows;
            store::Status status =
                def ? store.storedValues(*def, {wanted}, &rows) : store::Status();
            if (rows.empty())
                return status;
            const int field = def->find(orvo::field::FolderKey);
            *desktop = field < 0 ? QString()
                                 : QString::fromStdString(store::textOf(
                                       rows.begin()->second[static_cast<size_t>(field)]));
            return status;
        },
        [this, desktop, take](const store::Status& status) {
            if (status.ok() && *desktop)
                take(**desktop);
            else
                emit told(LogWarning, status.ok() ? Text::tr("Показать нечего: строки больше нет.")
                                                  : QString::fromStdString(status.text));
        });
}

void RecordJump::whenStored(const QString& table, const QString& key,
                            const std::function<void()>& go) {
    lookUp(table, key, [go](const QString&) { go(); });
}

/// A row that becomes current under a question or a picker would get the answer.
void RecordJump::show(const QString& table, const QString& key, const QString& desktop) {
    if (refuses())
        return;
    lookUp(table, key, [this, table, key, desktop](const QString& found) {
        if (refuses())
            return; // what the guard saves would take the place of a question
        const QString where = found.isEmpty() ? desktop : found;
        const auto go = [this, table, key, where] {
            m_context.guard.dropAll();
            showNow(table, key, where);
        };
        if (m_context.guard.mayGo(&m_context.window, Text::tr("Показать строку"), {go, {}}))
            go();
    });
}

bool RecordJump::refuses() {
    const QString why = whyAnswerFirst();
    if (!why.isEmpty())
        emit told(LogWarning, Text::tr("Строка не показана: ") + why);
    return !why.isEmpty();
}

void RecordJump::showNow(const QString& table, const QString& key, const QString& desktop) {
    if (refuses())
        return;
    // Not while a slot of a module waits in a dialog or a menu.
    if (!m_context.pump.mayDeliver()) {
        QTimer::singleShot(100, this,
                           [this, table, key, desktop] { showNow(table, key, desktop); });
        return;
    }
    const QPointer<QWidget> from(QApplication::focusWidget());
    const QString name = moduleShowing(table);
    if (!name.isEmpty())
        m_context.openModule(name);
    for (const QPointer<COrvoCliMod>& module :
         m_context.modules.modules(client::ModuleState::Running))
        if (module->m_moduleName == name && module->ModShowRecord(table, key, desktop))
            return;
    if (from && from->isVisible()) { // where the next one is chosen
        from->activateWindow();
        from->setFocus();
    }
    emit told(LogWarning, Text::tr("Строка есть в хранилище, но в редакторе не видна."));
}

} // namespace orvo::app
