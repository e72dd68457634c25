#include "editor/EditorWindow.h"

#include "frame/CommonFunctions.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/WindowParts.h"
#include "models/TreeSearchBar.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QScopedValueRollback>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <utility>

namespace orvo::editor {

EditorWindow::EditorWindow(COrvoCliApp* app)
    : COrvoCliMod(app)
    , m_codec(recordCodec())
    , m_clipboard(QGuiApplication::clipboard())
    , m_commands(new Commands(
          this, {.isEditing = [this] { return !ModEditText().isEmpty(); },
                 .enable = [this](QTreeView* pane) { enableActions(pane); },
                 .finishEdit = [this] { return ModEditText().isEmpty() || ModEditSave(); }})) {
    connect(m_clipboard, &QClipboard::dataChanged, this, &EditorWindow::on_clipboardDataChanged);
}

EditorWindow::~EditorWindow() {
    Q_ASSERT_X(!centralWidget(), "~EditorWindow", "the views outlive the models that they show");
}

void EditorWindow::destroyViews() {
    delete std::exchange(m_commands, nullptr); // it looks at the focus, which goes with the views
    disconnect(m_clipboard, nullptr, this, nullptr);
    for (const QTreeView* view : findChildren<QTreeView*>())
        if (view->selectionModel())
            disconnect(view->selectionModel(), nullptr, this, nullptr);
    delete takeCentralWidget();
}

void EditorWindow::makeEditButtons() {
    m_btnSave =
        makeToolButton(this, "checkin1", translated(QT_TRANSLATE_NOOP("orvo", "Сохранить")));
    m_btnSave->setObjectName(QStringLiteral("saveButton"));
    Commands::addKeys(m_btnSave, m_btnSave->text(), keys::save);
    connect(m_btnSave, &QToolButton::pressed, this, &EditorWindow::on_save_pressed);
    m_btnCancel =
        makeToolButton(this, "cancel1", translated(QT_TRANSLATE_NOOP("orvo", "Не сохранять")));
    m_btnCancel->setObjectName(QStringLiteral("cancelButton"));
    Commands::addKeys(m_btnCancel, m_btnCancel->text(), keys::cancel);
    connect(m_btnCancel, &QToolButton::pressed, this, &EditorWindow::on_cancel_pressed);
}

void EditorWindow::bindEditCommands(const std::vector<QTreeView*>& trees) {
    auto* save =
        new QAction(image("checkin1"), translated(QT_TRANSLATE_NOOP("orvo", "Сохранить")), this);
    save->setObjectName(QStringLiteral("saveEdit"));
    save->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    addAction(save);
    m_commands->bind(keys::save, nullptr, save);
    connect(save, &QAction::triggered, this, &EditorWindow::on_save_pressed);
    const auto follow = [this, save] { save->setEnabled(m_btnSave->isEnabled()); };
    connect(this, &EditorWindow::editStateChanged, save, follow);
    follow();

    const auto bindSearch = [this](const char* id, const std::function<void()>& act) {
        auto* action = new QAction(keys::text(*keys::command(QLatin1String(id))), this);
        action->setObjectName(QStringLiteral("search_") + QLatin1String(id));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
        m_commands->bind(id, nullptr, action);
        connect(action, &QAction::triggered, this, act);
    };
    bindSearch(keys::find, [this] { openSearch(); });
    bindSearch(keys::nextHit, [this] { stepToHit(1); });
    bindSearch(keys::previousHit, [this] { stepToHit(-1); });
    bindSearch(keys::searchBy, [this] { searchByNext(); });

    const auto isEditing = [this] { return m_btnCancel->isEnabled(); };
    // Once the edit has ended, and again when its own change has come back: a new row is known to
    // be saved then.
    m_panes = trees;
    m_afterEdit.setSingleShot(true);
    m_afterEdit.setInterval(0);
    connect(&m_afterEdit, &QTimer::timeout, this, &EditorWindow::enableAfterEdit);
    connect(this, &EditorWindow::editStateChanged, &m_afterEdit, [this] {
        if (!m_btnSave->isEnabled())
            m_afterEdit.start();
    });

    std::vector<QTreeView*> panes = trees;
    panes.push_back(m_passportView);
    for (QTreeView* pane : panes)
        m_commands->bind(
            keys::cancel, pane, nullptr, [this] { on_cancel_pressed(); }, isEditing, true);
    PassportKeys* fields = m_passportKeys;
    // A field that stays open holds back what others write, although nothing is typed any more.
    connect(this, &EditorWindow::editStateChanged, fields, [this, fields] {
        if (!m_btnSave->isEnabled())
            QTimer::singleShot(0, fields, [this, fields] {
                if (ModEditText().isEmpty())
                    fields->closeField();
            });
    });
    m_commands->bind(
        keys::rename, m_passportView, nullptr, [fields] { fields->editValue(); },
        [fields] { return fields->mayEdit(); }, true);
    m_commands->bind(
        keys::choose, m_passportView, nullptr, [fields] { fields->chooseValue(); },
        [fields] { return fields->mayChoose(); }, true);
    m_commands->bind(
        keys::toggle, m_passportView, nullptr, [fields] { fields->toggleValue(); },
        [fields] { return fields->mayToggle(); }, true);
    m_commands->showKeysInToolTips();
}

void EditorWindow::nameForReaders(const QString& passport) {
    m_passportView->setAccessibleName(passport);
    for (QToolBar* bar : findChildren<QToolBar*>()) {
        bar->setAccessibleName(translated(QT_TRANSLATE_NOOP("orvo", "Панель инструментов")));
        for (QToolButton* button : bar->findChildren<QToolButton*>()) {
            if (button->text().isEmpty())
                button->setAccessibleName(button->toolTip());
            if (button->objectName() == QLatin1String("qt_toolbar_ext_button"))
                button->setAccessibleName(translated(QT_TRANSLATE_NOOP("orvo", "Ещё")));
        }
    }
}

void EditorWindow::enableAfterEdit() {
    if (!ModEditText().isEmpty())
        return;
    const QWidget* focus = QApplication::focusWidget();
    const bool inPassport =
        m_passportView && focus && (focus == m_passportView || m_passportView->isAncestorOf(focus));
    for (QTreeView* pane : m_panes)
        if (pane == focus || (inPassport && pane == m_panes.back()))
            enableActions(pane);
}

void EditorWindow::slot_modNotify(QString name, QVariant value) {
    if (name == QLatin1String("menus"))
        m_commands->refresh();
    COrvoCliMod::slot_modNotify(name, value);
}

namespace {

void collectActions(const QMenu& menu, std::vector<std::pair<QPointer<QAction>, bool>>& states) {
    for (QAction* action : menu.actions()) {
        states.emplace_back(action, action->isEnabled());
        if (action->menu())
            collectActions(*action->menu(), states);
    }
}

} // namespace

void EditorWindow::execMenu(QMenu& menu, const QPoint& position) {
    std::vector<std::pair<QPointer<QAction>, bool>> states;
    collectActions(menu, states);
    const auto keep = [&states](const QWidget*, const QWidget* now) {
        if (qobject_cast<const QMenu*>(now))
            for (const auto& [action, isOn] : states)
                if (action)
                    action->setEnabled(isOn);
    };
    connect(qApp, &QApplication::focusChanged, &menu, keep);
    menu.exec(position);
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
            const char* title =
                field.passport.caption ? field.passport.caption : QT_TRANSLATE_NOOP("orvo", "Имя");
            m_app->m_logModule->LogFile(
                5, place,
                translated(QT_TRANSLATE_NOOP(
                               "orvo", "%1: «%2» изменено другим, набранное «%3» не сохранено"))
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
    Q_ASSERT(m_propModel && m_passpDelegate && m_passportView); // 1
    m_followed = std::move(tables);
    m_views = std::move(views);
}

void EditorWindow::MessageOn() {
    {
        QuietViews quiet(m_views);
        Q_ASSERT(!m_quiet); // 3
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
    m_boxUses.reset(); // they were those of another box
    PopMessageBoxCreate();
    m_popMessageBox->setMessage(title, text, icon, type, slot);
    m_popMessageBox->setDetails(details);
    m_popMessageBox->show();
}

void EditorWindow::ask(const Question& question) {
    showBox(translated(QT_TRANSLATE_NOOP("orvo", "Уведомление")), question.text,
            MessageBoxIconQuestion, MessageBoxTypeYesNo, question.slot, question.details);
    m_popMessageBox->setSubject(QString::fromLatin1(question.table), question.keys, question.below);
}

bool EditorWindow::answeredYes(QAbstractButton* button) {
    if (!m_popMessageBox)
        return false;
    m_popMessageBox->hide();
    return m_popMessageBox->ButtonRole(button) == QMessageBox::YesRole;
}

void EditorWindow::openSearch() {
    if (TreeSearchBar* bar = searchBar())
        bar->open();
}

void EditorWindow::stepToHit(int by) {
    if (TreeSearchBar* bar = searchBar())
        bar->step(by);
}

void EditorWindow::searchByNext() {
    if (TreeSearchBar* bar = searchBar())
        bar->searchByNext();
}

void EditorWindow::refuse(const QString& reason) {
    showBox(translated(QT_TRANSLATE_NOOP("orvo", "Ошибка")), reason, MessageBoxIconError,
            MessageBoxTypeOk, SLOT(on_common_error_message(QAbstractButton*)));
}

void EditorWindow::tell(const QString& title, const QString& text) {
    showBox(title, text, MessageBoxIconNone, MessageBoxTypeOk,
            SLOT(on_common_error_message(QAbstractButton*)));
}

std::unique_ptr<QObject>
EditorWindow::watchUses(const char* table, const QStringList& keys,
                        const std::function<void(const UsesAnswer&)>& tell) {
    auto receiver = std::make_unique<QObject>();
    UsesRequest request;
    request.table = QString::fromLatin1(table);
    request.keys = keys;
    request.receiver = receiver.get();
    request.tell = tell;
    doCall(callUses, &request);
    if (!request.refusal.isEmpty())
        receiver.reset();
    return receiver;
}

bool EditorWindow::showUses(const char* table, const QString& key, bool takeFocus) {
    ShowUsesRequest request;
    request.table = QString::fromLatin1(table);
    request.key = key;
    request.takeFocus = takeFocus;
    doCall(callShowUses, &request);
    return request.refusal.isEmpty();
}

void EditorWindow::nameUsesInBox(const char* table, const QStringList& keys,
                                 const QString& details) {
    m_boxUses = watchUses(table, keys, [this, details](const UsesAnswer& answer) {
        if (!m_popMessageBox || m_popMessageBox->isHidden())
            return;
        QStringList lines;
        if (!details.isEmpty())
            lines << details;
        if (!answer.isKnown)
            lines << translated(QT_TRANSLATE_NOOP("orvo", "Где это используется, ещё выясняется…"));
        else if (answer.count == 0)
            lines << translated(QT_TRANSLATE_NOOP("orvo", "В меню не используется."));
        else
            lines << translated(QT_TRANSLATE_NOOP("orvo", "Используется: %1")).arg(answer.words)
                  << nameLines(answer.places, answer.count);
        m_popMessageBox->setDetails(lines.join(QLatin1Char('\n')));
    });
}

void EditorWindow::on_common_error_message(QAbstractButton*) {
    if (m_popMessageBox)
        m_popMessageBox->hide();
}

} // namespace orvo::editor
