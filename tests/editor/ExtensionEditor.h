// ExtensionEditor.h: a small editor of file extensions (`MenuFileExt`), beside the two of the
// library: a list, the passport of the current row, and the actions to add and delete. It shows
// what an editor has to bring: its columns and fields, its model, its rows and the words of its
// boxes.
#ifndef ORVO_TESTS_EDITOR_EXTENSIONEDITOR_H
#define ORVO_TESTS_EDITOR_EXTENSIONEDITOR_H

#include "editor/EditorWindow.h"
#include "editor/RecordEdit.h"
#include "models/TabRec.h"
#include "models/TreeModelCore.h"

namespace orvo::test {

/// Columns of the list.
struct ExtensionColumn {
    enum { Extension, KeyLink, IsNew };
};

class ExtensionModel : public TreeModelCore<TabRec> {
public:
    explicit ExtensionModel(const QStringList& headers);
    QVariant data(const QModelIndex& index, int role) const override;
    bool move(int from, int to) { return moveSibling(from, to, QModelIndex(), false); }
};

class ExtensionEditor : public editor::EditorWindow {
    Q_OBJECT
public:
    explicit ExtensionEditor(COrvoCliApp* app);
    ~ExtensionEditor() override;

    bool ModuleStart() override;
    QString ModEditText() const override;
    bool ModEditSave() override;
    void ModEditCancel() override;

public slots:
    void add();
    void askToDelete();

protected slots:
    void on_save_pressed() override;
    void on_cancel_pressed() override;
    void on_editor_valueChanged(const QString& rowName, const QVariant& value) override;
    void deleteAnswered(QAbstractButton* button);

protected:
    std::unique_ptr<ExtensionModel> m_model; ///< null until the start succeeded
    editor::RecordEdit m_edit;

private:
    void currentChanged(const QModelIndex& current);
    void showRecord(const Notification& change, const MDRData* record);
    QString extension(const QModelIndex& row) const;

    CMDArray m_table;  ///< 0 KeyLink, 1 fileExt
    QTreeView* m_list; ///< these views are children of the window
    QTreeView* m_passport;
    QString m_currentKey;
    bool m_moves = false; ///< the current row changes by a move of rows, not by the engineer
};

} // namespace orvo::test

#endif
