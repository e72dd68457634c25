#include "ui_OrvoResources.h"

#include "resources/OrvoResources.h"

#include "frame/CommonFunctions.h"
#include "frame/EscapeKey.h"
#include "frame/ScratchTable.h"
#include "frame/ViewRows.h"
#include "frame/WindowParts.h"
#include "resources/Columns.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

using orvo::KeyValues;

namespace {

/// Copies the forms whose folder does not exist.
void findOrphans(const CMDArray& resources, const CMDArray& folders, CMDArray& orphans) {
    constexpr int form = orvo::Kind::Form;
    // The forms of a folder follow each other.
    QByteArray folder;
    bool isThere = false;
    orvo::walkGroup(resources, 1, KeyValues().integer(form), [&](const MDRData* record) {
        if (orvo::integerOf(record, orvo::field::type_) != form)
            return false;
        if (orvo::isNull(record, orvo::field::MenuResourceFolderKey))
            return true;
        const QByteArray key = orvo::bytesOf(record, orvo::field::MenuResourceFolderKey);
        if (folder.isNull() || key != folder) {
            folder = key;
            isThere = orvo::seekKey(folders, orvo::fromRecord(key.constData())) != nullptr;
        }
        if (!isThere)
            orvo::RowWriter(orphans, MDARecNew(orphans.array)).copyAll(record);
        return true;
    });
}

} // namespace

OrvoResources::OrvoResources(COrvoCliApp* app)
    : EditorWindow(app)
    , m_ui(std::make_unique<Ui_OrvoResources>()) {
    orvo::setupForm([this] { m_ui->setupUi(this); });

    m_btnCreate = orvo::makeToolButton(this, "new1", tr("Создать"));
    m_menuCreate = orvo::addInstantMenu(m_btnCreate, creators());
    makeEditButtons();

    QToolBar* bar = m_ui->toolBar;
    bar->addWidget(m_btnCreate);
    bar->addAction(m_ui->actLoadFiles);
    bar->addAction(m_ui->actDelete);
    bar->addAction(m_ui->actExtractFiles);
    bar->addSeparator();
    bar->addWidget(m_btnSave);
    bar->addWidget(m_btnCancel);
    bar->addSeparator();
    orvo::arrangeToolBar(bar);
    makeSearchBar();

    m_ui->splitter->setSizes({400, 150});
}

void OrvoResources::makeSearchBar() {
    QToolBar* bar = m_ui->toolBar;
    m_edSearch = new QLineEdit(this); // widgets of the tool bar become its children
    m_edSearch->setSizePolicy(QSizePolicy());
    // The clear button comes and goes; what stands beside the edit is not to move under the mouse.
    m_edSearch->setMinimumWidth(30 * m_edSearch->fontMetrics().averageCharWidth());
    m_edSearch->setClearButtonEnabled(true);
    if (auto* clear = m_edSearch->findChild<QToolButton*>()) {
        clear->setIcon(orvo::image("cancel1"));
        clear->setAccessibleName(tr("Очистить"));
    }
    m_edSearch->addAction(orvo::image("search1"), QLineEdit::LeadingPosition)->setText(tr("Поиск"));
    m_edSearch->setPlaceholderText(tr("Поиск..."));
    connect(m_edSearch, &QLineEdit::textChanged, this, &OrvoResources::on_search_textChanged);
    m_edSearch->installEventFilter(&m_search);
    new orvo::EscapeKey(m_edSearch, // the field's child
                        [this] { m_ui->tvRes->setFocus(Qt::ShortcutFocusReason); });
    bar->addWidget(m_edSearch);

    m_btnSearchDown = orvo::makeToolButton(this, "down2", QString());
    m_btnSearchUp = orvo::makeToolButton(this, "up2", QString());
    for (QToolButton* button : {m_btnSearchDown, m_btnSearchUp}) {
        button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        bar->addWidget(button);
    }
    connect(m_btnSearchDown, &QToolButton::pressed, this, &OrvoResources::on_search_down_pressed);
    connect(m_btnSearchUp, &QToolButton::pressed, this, &OrvoResources::on_search_up_pressed);

    m_lblSearch = new QLabel(tr(" Искать по: "), this);
    m_lblSearch->setFont(m_ui->tvRes->font());
    bar->addWidget(m_lblSearch);

    m_cmbSearch = new QComboBox(this);
    m_search.setWidgets({m_edSearch, m_cmbSearch, m_btnSearchDown, m_btnSearchUp});
    m_cmbSearch->setFocusPolicy(Qt::NoFocus);
    m_cmbSearch->addItems({tr("Наименование"), tr("Ресурс")});
    m_cmbSearch->setCurrentIndex(0);
    m_cmbSearch->setFont(m_ui->tvRes->font());
    m_lblSearch->setBuddy(m_cmbSearch);
    connect(m_cmbSearch, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &OrvoResources::on_searchCmb_indexChanged);
    bar->addWidget(m_cmbSearch);
}

OrvoResources::~OrvoResources() {
    destroyViews();
}

bool OrvoResources::ModuleStart() {
    SetModTitle(tr("Редактор ресурсов"), QString());
    if (m_resModel) // its rows read from the tables
        m_resModel->removeRows(0, m_resModel->rowCount());
    if (!loadTables())
        return false;
    setTreeArrangement();
    followTables();
    if (!m_app->m_mayWrite)
        setReadOnly();
    loadResTreeUpper();
    setActionsDisabled();
    enableEditButtons(false);
    m_edit.end();
    return true;
}

void OrvoResources::ModuleStop() {}

void OrvoResources::notificationsTaken() {
    // Not before its own change has come: what others do makes no row current.
    if (!m_focusKey.isEmpty() && m_focusCame)
        setResFocusedItemAfterChanges();
}

void OrvoResources::setResFocusedItemAfterChanges() {
    if (!m_resModel)
        return;
    const QModelIndex row = m_resModel->findIndexByKey(m_focusKey);
    if (!row.isValid())
        return;
    orvo::makeCurrent(m_ui->tvRes, row);
    m_focusKey.clear();
    m_focusCame = false;
}

bool OrvoResources::loadTables() {
    if (!fetch(orvo::table::MenuResource, m_tabResource))
        return false;
    orvo::setKeys(m_tabResource, orvo::keylist::MenuResource);
    if (!fetch(orvo::table::MenuResourceFolder, m_tabResFolder))
        return false;
    orvo::setKeys(m_tabResFolder, orvo::keylist::MenuResourceFolder);
    if (!fetch(orvo::table::Users, m_tabUsers))
        return false;
    orvo::setKeys(m_tabUsers, orvo::keylist::Users);
    if (!fetch(orvo::table::MenuFileExt, m_tabFileExt))
        return false;
    orvo::setKeys(m_tabFileExt);
    if (!fetchUser())
        return false;
    const auto structure = [&](COrvoCliSes* session, QString* error) {
        return GetTableStructure(session, orvo::table::MenuResource, m_tabOrphans, error);
    };
    if (!orvo::fetchOrLog(*this, "OrvoResources::loadTables->MenuResource", structure))
        return false;
    orvo::setKeys(m_tabOrphans);
    findOrphans(m_tabResource, m_tabResFolder, m_tabOrphans);
    return true;
}

bool OrvoResources::fetchUser() {
    CMDArray user;
    const auto request = [&](COrvoCliSes* session, QString* error) {
        return getUserInfo(session, user, *error);
    };
    if (!orvo::fetchOrLog(*this, "OrvoResources::loadTables->getUserInfo", request))
        return false;
    const MDRData* record = MDARec(user.array, 0, 0);
    m_userProp0 = orvo::textOf(record, 0);
    m_userProp1 = orvo::textOf(record, 1);
    m_userLogin = orvo::textOf(record, 2);
    return true;
}
