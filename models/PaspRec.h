// PaspRec.h: the record behind one row of the property grid.
#ifndef ORVO_MODELS_PASPREC_H
#define ORVO_MODELS_PASPREC_H

#include "models/RowValues.h"

#include <QComboBox>
#include <QList>
#include <QPointer>
#include <QVariant>
#include <QVector>

#include <cstdint>

namespace orvo {
template <class Record>
struct RecordOps;
template <class Record>
class RowBatch;
} // namespace orvo

/// One row of a passport. The operations are those of TabRec; only childNumber() differs.
class PaspRec {
public:
    explicit PaspRec(const QVector<QVariant>& data, PaspRec* parent = nullptr);
    PaspRec(const orvo::RowValues& values, PaspRec* parent);
    ~PaspRec();
    PaspRec(const PaspRec&) = delete;
    PaspRec& operator=(const PaspRec&) = delete;

    PaspRec* child(int number);
    const PaspRec* child(int number) const;
    int childCount() const { return m_childItems.size(); }
    int columnCount() const { return m_itemData.size(); }
    QVariant data(int column) const;
    bool setData(int column, const QVariant& value);
    PaspRec* parent() { return m_parentItem; }
    const PaspRec* parent() const { return m_parentItem; }
    /// Position in the parent's list, -1 if it does not list this record; 0 without a parent.
    int childNumber() const;

    bool insertChildren(int position, int count, int columns);
    bool removeChildren(int position, int count);
    bool insertColumns(int position, int columns);
    bool removeColumns(int position, int columns);

    int level() const { return m_level; }
    bool isExpanded() const { return m_expanded; }
    void setExpanded(bool expanded) { m_expanded = expanded; }
    /// The box whose entries the row's editor offers; null if none was given or it is gone.
    QComboBox* comboBox() const { return m_comboBox; }
    void setComboBox(QComboBox* box) { m_comboBox = box; } ///< stays the caller's

private:
    friend struct orvo::RecordOps<PaspRec>;
    template <class Record>
    friend class orvo::RowBatch;

    QPointer<QComboBox> m_comboBox;
    QList<PaspRec*> m_childItems; ///< owned
    orvo::RowValues m_itemData;
    PaspRec* m_parentItem; ///< not owned
    int32_t m_level;
    bool m_expanded = false;
    bool m_keyNoted = false;       ///< of a row on its way into a model, see RowBatch
    mutable int32_t m_rowHint = 0; ///< the row it was last seen at
};

#endif
