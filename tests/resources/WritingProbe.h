// WritingProbe.h: the resource editor at work: the catalogue, a host and the window, with all that
// creates, saves and deletes in reach.
#ifndef ORVO_TESTS_RESOURCES_WRITINGPROBE_H
#define ORVO_TESTS_RESOURCES_WRITINGPROBE_H

#include "tests/menu/WindowHands.h"
#include "tests/models/TreeText.h"
#include "tests/resources/ResProbe.h"

#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "picker/PopObjectList.h"

#include <QClipboard>
#include <QMimeData>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>

namespace orvo::test {

class WritingProbe : public ResProbe {
public:
    using ResProbe::ResProbe;

    using OrvoResources::checkResFolderName;
    using OrvoResources::checkResourceName;
    using OrvoResources::m_btnCancel;
    using OrvoResources::m_btnSave;
    using OrvoResources::m_btnSearchDown;
    using OrvoResources::m_btnSearchUp;
    using OrvoResources::m_cmbSearch;
    using OrvoResources::m_editCaption;
    using OrvoResources::m_editKey;
    using OrvoResources::m_editObject;
    using OrvoResources::m_edSearch;
    using OrvoResources::m_passpDelegate;
    using OrvoResources::m_popList;
    using OrvoResources::m_popTarget;
    using OrvoResources::m_searchHits;
    using OrvoResources::m_searchPos;
    using OrvoResources::on_actAddFolder_triggered;
    using OrvoResources::on_actAddFunction_triggered;
    using OrvoResources::on_actAddModule_triggered;
    using OrvoResources::on_actCut_triggered;
    using OrvoResources::on_actDelete_triggered;
    using OrvoResources::on_actPaste_triggered;
    using OrvoResources::on_cancel_pressed;
    using OrvoResources::on_passp_buttonpressed;
    using OrvoResources::on_poplist_OK_Pressed;
    using OrvoResources::on_res_dragdrop;
    using OrvoResources::on_save_pressed;
    using OrvoResources::on_search_down_pressed;
    using OrvoResources::on_search_up_pressed;
    using OrvoResources::removeResourceMessage;
};

/// The rows that the clipboard offers.
inline QByteArray onClipboard() {
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    return offered ? offered->data(resources::resourcesMime) : QByteArray();
}

/// The rows of fillCatalogue, and what `fill` adds, in a started editor.
struct Writing {
    using Fill = void (*)(TestStore&);

    /// With that row current, if it is told.
    explicit Writing(Fill fill = nullptr, const char* current = nullptr)
        : host(prepared(fill))
        , editor(host, "Resources") {
        editor.startOrFail();
        if (current)
            makeCurrent(current);
    }
    explicit Writing(const char* current) : Writing(nullptr, current) {}

    WritingProbe* operator->() { return editor.module.get(); }

    // What the engineer sees and does
    QTreeView* view() const { return editor.view("tvRes"); }
    QTreeView* propView() const { return editor.view("tvProp"); }
    void makeCurrent(const char* key) { makeCurrent(editor->row(key)); }
    void makeCurrent(const QModelIndex& row) {
        if (!row.isValid())
            qFatal("no such row");
        view()->setCurrentIndex(row);
    }
    /// Makes the rows the selection, the last one current.
    void select(std::initializer_list<const char*> keys) {
        view()->selectionModel()->clear();
        for (const char* key : keys)
            view()->selectionModel()->setCurrentIndex(
                editor->row(key), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    QModelIndex current() const { return view()->currentIndex().siblingAtColumn(0); }
    QString currentKey() { return editor->m_resModel->getItemKeyLink(current()); }
    QVariant cell(const QModelIndex& row, int column) const {
        return row.siblingAtColumn(column).data();
    }
    QVariant cell(const char* key, int column) { return cell(editor->row(key), column); }
    /// Keys of the rows below a row, in their order.
    QString below(const char* key) {
        QStringList keys;
        const QModelIndex parent = editor->row(key);
        for (int i = 0; i < editor->m_resModel->rowCount(parent); ++i)
            keys << editor->m_resModel->getItemKeyLink(editor->m_resModel->index(i, 0, parent));
        return keys.join(' ');
    }
    bool buttonsEnabled() {
        if (editor->m_btnSave->isEnabled() != editor->m_btnCancel->isEnabled())
            qFatal("the two buttons differ");
        return editor->m_btnSave->isEnabled();
    }
    void save() { QTest::mouseClick(editor->m_btnSave, Qt::LeftButton); }
    void cancel() { QTest::mouseClick(editor->m_btnCancel, Qt::LeftButton); }
    /// Writes over the value of a passport row in its editor, key by key.
    void type(const char* row, const QString& text) {
        QLineEdit* line = passportLine(propView(), *editor->m_propModel, row);
        line->selectAll();
        if (text.isEmpty())
            QTest::keyClick(line, Qt::Key_Delete);
        else
            typeText(line, text);
    }
    QStringList enabledActions() const {
        QStringList names;
        for (const QAction* action : editor.module->findChildren<QAction*>())
            if (action->objectName().startsWith("act") && action->isEnabled())
                names << action->objectName().mid(3);
        names.sort();
        return names;
    }
    /// Title and text of the box; empty if none stands.
    QString box() { return boxStands(*editor.module) ? boxText(*editor.module) : QString(); }
    void answer(int role) { answerBox(*editor.module, role); }

    // What the server is told and tells
    QString written() { return host.writes().take(); }
    void deliver() { host.deliver(*editor.module); }
    uint32_t state() { return editor->m_editState; }

    TestStore store;
    TestHost host;
    EditorUnderTest<WritingProbe> editor;

private:
    TestStore& prepared(Fill fill) {
        fillCatalogue(store);
        if (fill)
            fill(store);
        return store;
    }
};

constexpr uint32_t Idle = ResProbe::Idle;
constexpr uint32_t NewRow = ResProbe::NewRow;
constexpr uint32_t EditRow = ResProbe::EditRow;

} // namespace orvo::test

#endif
