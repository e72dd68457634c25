#include "picker/PopObjectList.h"

#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/RowDelegate.h"
#include "frame/Vocabulary.h"
#include "frame/WindowParts.h"
#include "picker/ObjectListOwner.h"
#include "ui_PopObjectList.h"

#include <QFileInfo>
#include <QItemSelectionModel>
#include <QShowEvent>

using orvo::KeyValues;
using orvo::PickColumn;

namespace {

const QStringList& columnTitles() {
    static const QStringList titles{QStringLiteral("Имя"),
                                    QStringLiteral("Описание"),
                                    QStringLiteral("UserBlock"),
                                    QStringLiteral("DateBlock"),
                                    QString::fromLatin1(orvo::field::KeyLink),
                                    QStringLiteral("IsFolder"),
                                    QStringLiteral("Blocked")};
    return titles;
}

QString filesPath(const QObject* owner) {
    const auto* module = qobject_cast<const COrvoCliMod*>(owner);
    return module ? module->m_paths->workDir + QString::fromLatin1(orvo::mirrorPath) : QString();
}

} // namespace

CPopObjectList::CPopObjectList(QMainWindow* parent)
    : CPopTemplate(parent, -1)
    , m_ui(new Ui_CPopObjectList)
    , codec(nullptr)
    , treeModel(nullptr) {
    orvo::setupForm([this] { m_ui->setupUi(this); });
    codec = orvo::recordCodec();
    m_ui->tvObj->setStyleSheet(orvo::treeStyleSheet());
    m_ui->tvObj->setTextElideMode(Qt::ElideNone);
    m_ui->tvObj->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_ui->tvObj->setUniformRowHeights(true);
    m_ui->tvObj->setItemDelegate(new orvo::RowDelegate(m_ui->tvObj)); // the view's child
    m_model = std::make_unique<PopTreeModel>(columnTitles(), filesPath(parent), this);
    treeModel = m_model.get();
    m_ui->tvObj->setModel(treeModel);
    m_ui->tvObj->setColumnWidth(PickColumn::Name, 300);
}

CPopObjectList::~CPopObjectList() {
    // The view must not outlive what it shows.
    m_ui->tvObj->setModel(nullptr);
}

QTreeView* CPopObjectList::tvObj() const {
    return m_ui->tvObj;
}

void CPopObjectList::reloadAndShow() {
    hide();
    show();
    raise();
    activateWindow();
}

void CPopObjectList::showEvent(QShowEvent* event) {
    CPopTemplate::showEvent(event);
    // A window that the desktop brings back keeps what it shows.
    if (event->spontaneous())
        return;
    refreshTables();
    clearModel();
    treeModel->setShowFileIcons(false);
    m_ui->btnCancel->setFocus(Qt::OtherFocusReason);

    const orvo::ResourceKind* kind = orvo::resourceKind(objectType);
    if (!kind)
        return;
    const bool files = kind->topFolder == nullptr;
    m_ui->tvObj->setSelectionMode(multipleChoice && !files ? QAbstractItemView::ExtendedSelection
                                                           : QAbstractItemView::SingleSelection);
    m_ui->tvObj->setColumnHidden(PickColumn::Caption, files);
    orvo::hideColumns(m_ui->tvObj, PickColumn::UserBlock, PickColumn::Blocked);
    treeModel->setObjectType(objectType);
    if (files) {
        treeModel->setShowFileIcons(
            orvo::sameText(sourceName, QString::fromLatin1(orvo::iconFolder)));
        treeModel->setInitialFolder(sourceName);
        loadSysFiles();
    } else {
        loadTop(objectType);
    }
}

void CPopObjectList::hideEvent(QHideEvent* event) {
    CPopTemplate::hideEvent(event);
}

void CPopObjectList::refreshTables() {
    const auto* module = qobject_cast<const COrvoCliMod*>(parent());
    const auto* owner = dynamic_cast<const orvo::ObjectListOwner*>(parent());
    if (!module || !owner)
        return;
    if (!orvo::sameText(module->m_moduleName, QStringLiteral("Menu")) &&
        !orvo::sameText(module->m_moduleName, QStringLiteral("Resources")))
        return;
    const auto copy = [](CMDArray& own, const CMDArray* theirs,
                         std::initializer_list<const char*> keys) {
        if (!theirs || !theirs->array) {
            own.status = MDX_E_SELF;
            return;
        }
        const int status = MDACopy(own.array, theirs->array, 1);
        orvo::setKeys(own, keys);
        own.status = status;
    };
    copy(resourceTable, owner->resourceTable(), orvo::keylist::MenuResource);
    copy(folderTable, owner->resourceFolderTable(), orvo::keylist::MenuResourceFolder);
}

void CPopObjectList::clearModel() {
    if (const int rows = treeModel->rowCount(QModelIndex()))
        treeModel->removeRows(0, rows, QModelIndex());
}

void CPopObjectList::on_btnOK_clicked() {
    const QModelIndexList chosen = m_ui->tvObj->selectionModel()->selectedIndexes();
    if (chosen.isEmpty()) {
        hide();
        return;
    }
    const QModelIndex first = chosen.first();
    chosenKey = first.sibling(first.row(), PickColumn::KeyLink).data().toString();
    chosenName = first.sibling(first.row(), PickColumn::Name).data().toString();
    emit btnOK_pressed();
    hide();
}

void CPopObjectList::on_btnCancel_clicked() {
    hide();
}

void CPopObjectList::loadModules() {
    loadTop(KindModule);
}

void CPopObjectList::loadFunctions() {
    loadTop(KindFunction);
}

void CPopObjectList::loadForms() {
    loadTop(KindForm);
}

void CPopObjectList::loadTop(int32_t kind) {
    loadRoot(kind, QString::fromUtf8(orvo::resourceKind(kind)->topFolder));
}

void CPopObjectList::loadFolders(const QString& key) {
    loadFoldersOf(objectType, key);
}

void CPopObjectList::loadItems(const QString& key) {
    loadItemsOf(objectType, key, true);
}

void CPopObjectList::loadSysFolders(const QString& key) {
    loadFoldersOf(KindFile, key);
}

void CPopObjectList::loadSysItems(const QString& key) {
    loadItemsOf(KindFile, key, false);
}

void CPopObjectList::loadSysFiles() {
    if (sourceName.isEmpty()) {
        loadSysFolders(QString());
        loadSysItems(QString());
    }
    bool found = false;
    const QString key = rootFolder(KindFile, sourceName, &found);
    if (!found)
        return;
    if (!key.isNull()) {
        // The disk may tell case apart where captions do not: the area bears the folder's caption.
        if (!QFileInfo::exists(treeModel->initialFolderPath()))
            treeModel->setInitialFolder(
                orvo::textOf(orvo::seekKey(folderTable, key), orvo::field::caption));
        loadSysFolders(key);
        loadSysItems(key);
    }
    if (chosenName.isEmpty())
        return;
    chosenKey = QString();
    preselect(KindFile);
}

void CPopObjectList::loadRoot(int type, const QString& caption) {
    bool found = false;
    const QString key = rootFolder(type, caption, &found);
    if (!found)
        return;
    if (!key.isNull()) {
        loadFolders(key);
        loadItems(key);
    }
    chosenKey = QString();
    if (treeModel->rowCount(QModelIndex()) > 0)
        preselect(type);
}

QString CPopObjectList::rootFolder(int type, const QString& caption, bool* found) const {
    const int32_t position =
        orvo::seekPosition(folderTable, 1, KeyValues().integer(type).null().text(caption));
    *found = position >= 0;
    QString key;
    orvo::walkFrom(folderTable, 1, position, [&](MDRData* record) {
        if (orvo::integerOf(record, orvo::field::type_) != type)
            return false;
        if (!orvo::holdsText(record, orvo::field::caption, caption))
            return true;
        key = orvo::textOf(record, orvo::field::KeyLink);
        return false;
    });
    return key;
}

void CPopObjectList::preselect(int type) {
    orvo::walkGroup(resourceTable, 2, KeyValues().integer(type).text(chosenName),
                    [&](MDRData* record) {
                        if (orvo::integerOf(record, orvo::field::type_) != type)
                            return false;
                        if (!orvo::holdsText(record, orvo::field::name_, chosenName))
                            return true;
                        const QString key = orvo::textOf(record, orvo::field::KeyLink);
                        const QModelIndex row = treeModel->findIndexByKey(key);
                        if (!row.isValid())
                            return true;
                        chosenKey = key;
                        m_ui->tvObj->scrollTo(row, QAbstractItemView::EnsureVisible);
                        m_ui->tvObj->selectionModel()->select(row, QItemSelectionModel::Select |
                                                                       QItemSelectionModel::Rows);
                        return false;
                    });
}
