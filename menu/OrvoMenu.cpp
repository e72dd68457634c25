#include "ui_OrvoMenu.h"

#include "menu/OrvoMenu.h"

#include "frame/Records.h"
#include "frame/ViewRows.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "menu/Fields.h"

#include <QApplication>
#include <QMenu>
#include <QToolButton>

OrvoMenu::OrvoMenu(COrvoCliApp* app)
    : EditorWindow(app)
    , m_elementFields(orvo::menu::elementFields())
    , m_desckFields(orvo::menu::desckFields())
    , m_ui(std::make_unique<Ui_OrvoMenu>()) {
    orvo::setupForm([this] { m_ui->setupUi(this); });
    connect(qApp, &QApplication::focusChanged, this, &OrvoMenu::on_focus_changed);
    m_btnNewDesck = orvo::makeToolButton(this, "new1", tr("Создать"));
    m_menuNewDesck =
        orvo::addInstantMenu(m_btnNewDesck, {m_ui->actAddFoldertvDesck, m_ui->actAddDescktop});
    makeEditButtons();
    m_btnNewElem = orvo::makeToolButton(this, "newelem1", tr("Новый элемент"));
    m_menuNewElem = orvo::addInstantMenu(m_btnNewElem, elementCreators());

    QToolBar* bar = m_ui->toolBar;
    bar->addWidget(m_btnNewDesck);
    bar->addAction(m_ui->actDeleteFromtvDesck);
    bar->addSeparator();
    bar->addWidget(m_btnSave);
    bar->addWidget(m_btnCancel);
    bar->addSeparator();
    bar->addAction(m_ui->actMoveUp);
    bar->addAction(m_ui->actMoveDown);
    bar->addSeparator();
    bar->addWidget(m_btnNewElem);
    bar->addAction(m_ui->actDeleteElem);
    orvo::arrangeToolBar(bar);

    m_ui->splitter->setSizes({120, 400});
    m_actPreview = new QAction(orvo::image("descktop1"), tr("Показать как оператору"), this);
    m_actPreview->setObjectName(QStringLiteral("previewDesktop"));
    m_actPreview->setShortcutContext(Qt::WindowShortcut); // from any pane beside the shown editor
    addAction(m_actPreview);
    commands().bind(orvo::keys::preview, nullptr, m_actPreview);
    connect(m_actPreview, &QAction::triggered, this, [this] { m_preview.show(); });
    // All three columns of the menu beside the two of the passport.
    m_ui->splitter_2->setSizes({600, 400});
}

OrvoMenu::~OrvoMenu() {
    // Neither the application's signals nor the ends of the views may reach a half-destroyed
    // window: the connections go first, then the views, and the models that they show last.
    disconnect(qApp, nullptr, this, nullptr);
    destroyViews();
}

bool OrvoMenu::ModuleStart() {
    SetModTitle(tr("Редактор меню"), QString());
    if (!loadTables())
        return false;
    m_skipDesckChange = false;
    m_elementEdit.end();
    m_desckEdit.end();
    enableEditButtons(false);
    setMenuActionsDisabled();
    setDesckActionsDisabled();
    setTreeArrangement();
    followTables();
    if (!m_app->m_mayWrite)
        setReadOnly();
    loadDesckTreeUpper();
    return true;
}

void OrvoMenu::ModuleStop() {}

void OrvoMenu::notificationsTaken() {
    if (!m_focusKey.isNull())
        setMenuFocusedItemAfterChanges();
}

void OrvoMenu::setMenuFocusedItemAfterChanges() {
    if (!m_menuModel)
        return;
    const QModelIndex row = m_menuModel->findIndexByKey(m_focusKey);
    if (!row.isValid())
        return;
    orvo::makeCurrent(m_ui->tvMenu, row);
    m_focusKey.clear();
}

bool OrvoMenu::loadTables() {
    if (!fetch(orvo::table::MenuResource, m_tabResource))
        return false;
    orvo::setKeys(m_tabResource, orvo::keylist::MenuResourceByName);
    if (!fetch(orvo::table::MenuFolder, m_tabFolder))
        return false;
    orvo::setKeys(m_tabFolder, orvo::keylist::MenuFolder);
    // Logged under the other editor's name, by which this place is known in logs.
    return fetch(orvo::table::MenuResourceFolder, m_tabResFolder, "OrvoResources");
}
