// RowValues.h: the values of one row of a tree, its own or read from a record when asked for.
#ifndef ORVO_MODELS_ROWVALUES_H
#define ORVO_MODELS_ROWVALUES_H

#include <QVariant>
#include <QVector>

#include <memory>
#include <utility>

struct MDRData;

namespace orvo {

/// What rows show of the records of a table: a tree of a million rows then takes no second copy of
/// a million records. The values follow from the record alone, so that they change only when it
/// does. Outlives the rows that read through it.
class RowSource {
public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;

    virtual int columnCount() const = 0;
    /// `column` is in 0 .. columnCount() - 1; `record` is not null.
    virtual QVariant value(const MDRData* record, int column) const = 0;

protected:
    ~RowSource() = default;
};

/// A value for each column. They are the row's own, or those that a source reads from a record as
/// long as nothing is written to the row. The record must be as it was, and where it was, until
/// own() is called or this ends; TreeModelCore::keepValues is how a model sees to that.
class RowValues {
public:
    explicit RowValues(const QVector<QVariant>& own = {}) : m_own(own) {}
    RowValues(const RowSource& source, const MDRData* record)
        : m_record(record)
        , m_source(&source) {}
    RowValues(const RowValues& other) : m_source(other.m_source) {
        if (m_source)
            m_record = other.m_record;
        else
            new (&m_own) QVector<QVariant>(other.m_own);
    }
    RowValues& operator=(const RowValues& other) {
        if (this != &other) {
            this->~RowValues();
            new (this) RowValues(other);
        }
        return *this;
    }
    ~RowValues() {
        if (!m_source)
            std::destroy_at(&m_own);
    }

    int size() const { return m_source ? m_source->columnCount() : m_own.size(); }
    /// `column` is in 0 .. size() - 1.
    QVariant at(int column) const {
        return m_source ? m_source->value(m_record, column) : m_own.at(column);
    }
    /// The record they are read from; null if they are the row's own.
    const MDRData* record() const { return m_source ? m_record : nullptr; }
    /// The row's own values, to be written to; what was read from the record until now is what
    /// they begin with.
    QVector<QVariant>& own() {
        if (m_source) {
            QVector<QVariant> read;
            read.reserve(m_source->columnCount());
            for (int column = 0; column < m_source->columnCount(); ++column)
                read.append(m_source->value(m_record, column));
            m_source = nullptr;
            new (&m_own) QVector<QVariant>(std::move(read));
        }
        return m_own;
    }

private:
    // One of them, so that a row of a record takes no room for values.
    union {
        QVector<QVariant> m_own;
        const MDRData* m_record;
    };
    const RowSource* m_source = nullptr; ///< null: m_own
};

} // namespace orvo

#endif
