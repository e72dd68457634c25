// PropModel.h: the property grid (passport) of an element or resource.
#ifndef ORVO_MODELS_PROPMODEL_H
#define ORVO_MODELS_PROPMODEL_H

#include "models/PaspRec.h"
#include "models/TreeModelCore.h"

#include <QSet>

/// How the value of a row is edited.
enum MyEditorType {
    MyEditorLine = 0,   ///< a text
    MyEditorCombo = 1,  ///< a text out of the row's combo box
    MyEditorCheck = 2,  ///< a bool; an invalid value is partially checked
    MyEditorButton = 3, ///< a text with a "..." button, not typed
};

/// Columns of the passport. A category row is no editor row.
struct PropColumn {
    enum { Caption, Value, Editor /**< MyEditorType */, ReadOnly, Name /**< the key */, IsEditRow };
};

/// Row names compare without regard to case.
class PropModel : public orvo::TreeModelCore<PaspRec> {
    Q_OBJECT
public:
    /// `iconsPath`, `parent`: Unused; the published interface has this parameter.
    PropModel(const QStringList& headers, const QString& iconsPath, QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    /// As in the core; emits editorRowValueChanged if the value differs from the old one, whatever
    /// the column.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// A new last row below `parent`. False, and nothing added, below a column other than 0.
    bool AddEditorRow(const QString& name, const QString& caption, MyEditorType editor,
                      const QModelIndex& parent, bool readOnly);
    bool AddCategoryRow(const QString& name, const QString& caption, const QModelIndex& parent);
    /// Fills in a value without any signal: it shows at the view's next repaint, and never looks
    /// like an edit. False if there is no editor row of that name.
    bool setRowValue(const QString& name, const QVariant& value);
    /// Invalid if there is no editor row of that name.
    QVariant getRowValue(const QString& name) const;
    /// False for an invalid index.
    bool isEditorRow(const QModelIndex& index) const;
    /// Removes all rows; false if there are none. An editor that is still open closes with its row,
    /// and what it then says is not taken: the owner may show another passport already.
    bool clearRows();
    /// The box that the editor of a row of type MyEditorCombo takes its entries from; it stays the
    /// caller's. Other rows: nothing. Unused; the published interface has this operation.
    void setComboBox(const QString& name, QComboBox* comboBox);
    /// Null for rows of another type, and for an invalid index.
    QComboBox* getComboBox(const QModelIndex& index) const;
    /// How many rows of a tree the passport is of, and in which of its rows, by their names in
    /// small letters, these differ: they are shown without a value. False if it was so already.
    bool setSelected(int count, const QSet<QString>& mixed);
    int selectedCount() const { return m_selectedCount; }
    bool isMixed(const QModelIndex& index) const;
    /// The row's value, not its name; a null string for an invalid index.
    QString getItemKeyLink(const QModelIndex& index) const { return itemText(index, 1); }

public slots:
    void setItemExpanded(const QModelIndex& index) { setItemExpandedFlag(index, true); }
    void setItemCollapsed(const QModelIndex& index) { setItemExpandedFlag(index, false); }

signals:
    /// A value was set through setData: the row's name and the new value of the column set.
    void editorRowValueChanged(const QString& name, const QVariant& value);

private:
    bool addRow(const QVector<QVariant>& values, const QModelIndex& parent);
    /// The editor row of that name, or null.
    PaspRec* editorRow(const QString& name) const;

    const QString m_iconsPath;
    bool m_clearing = false;
    int m_selectedCount = 1;
    QSet<QString> m_mixed;
};

#endif
