#include "models/PaspRec.h"

#include "models/RecordOps.h"

using Ops = orvo::RecordOps<PaspRec>;

PaspRec::PaspRec(const QVector<QVariant>& data, PaspRec* parent)
    : PaspRec(orvo::RowValues(data), parent) {}

PaspRec::PaspRec(const orvo::RowValues& values, PaspRec* parent)
    : m_itemData(values)
    , m_parentItem(parent)
    , m_level(parent ? parent->m_level + 1 : -1) {}

PaspRec::~PaspRec() {
    Ops::dropChildren(*this);
}

PaspRec* PaspRec::child(int number) {
    return Ops::child(*this, number);
}

const PaspRec* PaspRec::child(int number) const {
    return Ops::child(*this, number);
}

QVariant PaspRec::data(int column) const {
    return Ops::data(*this, column);
}

bool PaspRec::setData(int column, const QVariant& value) {
    return Ops::setData(*this, column, value);
}

int PaspRec::childNumber() const {
    return m_parentItem ? Ops::childNumber(*this) : 0;
}

bool PaspRec::insertChildren(int position, int count, int columns) {
    return Ops::insertChildren(*this, position, count, columns);
}

bool PaspRec::removeChildren(int position, int count) {
    return Ops::removeChildren(*this, position, count);
}

bool PaspRec::insertColumns(int position, int columns) {
    return Ops::insertColumns(*this, position, columns);
}

bool PaspRec::removeColumns(int position, int columns) {
    return Ops::removeColumns(*this, position, columns);
}
