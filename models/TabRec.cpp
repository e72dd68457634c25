#include "models/TabRec.h"

#include "models/RecordOps.h"

using Ops = orvo::RecordOps<TabRec>;

TabRec::TabRec(const QVector<QVariant>& data, TabRec* parent)
    : m_itemData(data)
    , m_parentItem(parent)
    , m_level(parent ? parent->m_level + 1 : -1) {}

TabRec::~TabRec() {
    Ops::dropChildren(*this);
}

TabRec* TabRec::child(int number) {
    return Ops::child(*this, number);
}

const TabRec* TabRec::child(int number) const {
    return Ops::child(*this, number);
}

QVariant TabRec::data(int column) const {
    return Ops::data(*this, column);
}

bool TabRec::setData(int column, const QVariant& value) {
    return Ops::setData(*this, column, value);
}

int TabRec::childNumber() const {
    return Ops::childNumber(*this);
}

bool TabRec::insertChildren(int position, int count, int columns) {
    return Ops::insertChildren(*this, position, count, columns);
}

bool TabRec::removeChildren(int position, int count) {
    return Ops::removeChildren(*this, position, count);
}

bool TabRec::insertColumns(int position, int columns) {
    return Ops::insertColumns(*this, position, columns);
}

bool TabRec::removeColumns(int position, int columns) {
    return Ops::removeColumns(*this, position, columns);
}

int TabRec::getChildrens(TabRec* other) {
    if (!other)
        return 0;
    const QList<TabRec*> rows = other->m_childItems;
    for (TabRec* row : rows) {
        m_childItems.append(row);
        row->m_parentItem = this;
        ++row->m_furtherLists;
    }
    return 0;
}

int TabRec::addfileInfoElement() {
    // Lists are short: the array grows by one element, without spare room.
    auto grown = std::make_unique<MyFileInfo[]>(static_cast<size_t>(m_fileInfoCount) + 1);
    for (int i = 0; i < m_fileInfoCount; ++i)
        grown[static_cast<size_t>(i)] = m_fileInfo[static_cast<size_t>(i)];
    m_fileInfo = std::move(grown);
    return m_fileInfoCount++;
}

void TabRec::clearFileInfo() {
    m_fileInfo.reset();
    m_fileInfoCount = 0;
}

void TabRec::setfileInfo(int number, const MyFileInfo& info) {
    if (MyFileInfo* element = getfileInfo(number))
        *element = info;
}

MyFileInfo* TabRec::getfileInfo(int number) {
    return number >= 0 && number < m_fileInfoCount ? &m_fileInfo[static_cast<size_t>(number)]
                                                   : nullptr;
}
