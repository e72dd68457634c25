#include "editor/EditorWindow.h"

#include "frame/CommonFunctions.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/WindowParts.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QToolButton>
#include <QTreeView>

namespace orvo::editor {

EditorWindow::EditorWindow(COrvoCliApp* app)
    : COrvoCliMod(app)
    , m_codec(recordCodec())
    , m_clipboard(QGuiApplication::clipboard()) {
    connect(m_clipboard, &QClipboard::dataChanged, this, &EditorWindow::on_clipboardDataChanged);
}

EditorWindow::~EditorWindow() {
    Q_ASSERT_X(!centralWidget(), "~EditorWindow", "the views outlive the models that they show");
}

void EditorWindow::destroyViews() {
    disconnect(m_clipboard, nullptr, this, nullptr);
    for (const QTreeView* view : findChildren<QTreeView*>())
        if (view->selectionModel())
            disconnect(view->selectionModel(), nullptr, this, nullptr);
    delete takeCentralWidget();
}

void EditorWindow::makeEditButtons() {
    m_btnSave = makeToolButton(this, "checkin1", translated("Сохранить"));
    connect(m_btnSave, &QToolButton::pressed, this, &EditorWindow::on_save_pressed);
    m_btnCancel = makeToolButton(this, "cancel1", translated("Не сохранять"));
    connect(m_btnCancel, &QToolButton::pressed, this, &EditorWindow::on_cancel_pressed);
}

void EditorWindow::enableEditButtons(bool enabled) {
    m_btnSave->setEnabled(enabled);
    m_btnCancel->setEnabled(enabled);
    emit editStateChanged();
}

void EditorWindow::tellReplaced(const QString& what, const RecordFields& fields,
                                const std::vector<Replaced>& replaced) {
    const QString place =
        QString::fromLatin1(metaObject()->className()) + QStringLiteral("::MessageData");
    for (const Replaced& one : replaced)
        for (const RecordField& field : fields) {
            if (field.column != one.column)
                continue;
            // What is typed outside of the passport is a name in a tree.
            const char* title = field.passport.caption ? field.passport.caption : "Имя";
            m_app->m_logModule->LogFile(
                5, place,
                translated("%1: «%2» изменено другим, набранное «%3» не сохранено")
                    .arg(what, translated(title), one.typed.toString()));
        }
}

// -------------------------------------------------------------------------------------------------
// Tables

bool EditorWindow::fetch(const char* table, CMDArray& records, const char* editor) {
    const QByteArray place =
        QByteArray(editor ? editor : metaObject()->className()) + "::loadTables->" + table;
    return fetchOrLog(*this, place.constData(), [&](COrvoCliSes* session, QString* error) {
        return GetTableRecords(session, table, records, error);
    });
}

void EditorWindow::follow(std::vector<Followed> tables, std::vector<QTreeView*> views) {
    m_followed = std::move(tables);
    m_views = std::move(views);
}

void EditorWindow::MessageOn() {
    {
        QuietViews quiet(m_views);
        const QScopedValueRollback<QuietViews*> whileTaken(m_quiet, &quiet);
        MessageGet();
    }
    notificationsTaken();
}

bool EditorWindow::MessageData(MDXCliParam* prm) {
    // A module whose start failed has neither tables nor trees to keep in step.
    if (m_followed.empty())
        return true;
    const Notification change(prm);
    if (!change.isTableEvent())
        return true;
    for (const Followed& followed : m_followed) {
        if (!change.isFor(followed.table))
            continue;
        const Followed::Apply& apply = change.action() == OrvoEventInsert   ? followed.inserted
                                       : change.action() == OrvoEventUpdate ? followed.updated
                                       : change.action() == OrvoEventDelete ? followed.deleted
                                                                            : Followed::Apply();
        if (apply)
            apply(change);
        break;
    }
    return true;
}

void EditorWindow::showRow(QTreeView* view, const QModelIndex& row) {
    if (m_quiet)
        m_quiet->scrollTo(view, row);
    else
        view->scrollTo(row);
}

void EditorWindow::deleteRecords(const char* table, const QStringList& keys) {
    if (keys.isEmpty())
        return;
    ScratchTable out(*m_app->m_session, table);
    if (!out.fetch())
        return;
    for (const QString& key : keys)
        out.add(MDX_DELETE).text(field::KeyLink, key);
    out.send();
}

// -------------------------------------------------------------------------------------------------
// Boxes

void EditorWindow::showBox(const QString& title, const QString& text, TMessageBoxIcon icon,
                           TMessageBoxType type, const char* slot, const QString& details) {
    PopMessageBoxCreate();
    m_popMessageBox->setMessage(title, text, icon, type, slot);
    m_popMessageBox->setDetails(details);
    m_popMessageBox->show();
}

void EditorWindow::ask(const Question& question) {
    showBox(translated("Уведомление"), question.text, MessageBoxIconQuestion, MessageBoxTypeYesNo,
            question.slot, question.details);
    m_popMessageBox->setSubject(QString::fromLatin1(question.table), question.keys, question.below);
}

bool EditorWindow::answeredYes(QAbstractButton* button) {
    if (!m_popMessageBox)
        return false;
    m_popMessageBox->hide();
    return m_popMessageBox->ButtonRole(button) == QMessageBox::YesRole;
}

void EditorWindow::refuse(const QString& reason) {
    showBox(translated("Ошибка"), reason, MessageBoxIconError, MessageBoxTypeOk,
            SLOT(on_common_error_message(QAbstractButton*)));
}

void EditorWindow::on_common_error_message(QAbstractButton*) {
    if (m_popMessageBox)
        m_popMessageBox->hide();
}

} // namespace orvo::editor
