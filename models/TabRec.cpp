#include "models/TabRec.h"

#include "models/RecordOps.h"

using Ops = orvo::RecordOps<TabRec>;

TabRec::TabRec(const QVector<QVariant>& data, TabRec* parent)
    : TabRec(orvo::RowValues(data), parent) {}

TabRec::TabRec(const orvo::RowValues& values, TabRec* parent)
    : m_itemData(values)
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
        ++row->rare().furtherLists;
    }
    return 0;
}

TabRec::Rare& TabRec::rare() {
    if (!m_rare)
        m_rare = std::make_unique<Rare>();
    return *m_rare;
}

int TabRec::addfileInfoElement() {
    // Lists are short: the array grows by one element, without spare room.
    const int count = fileInfoCount();
    auto grown = std::make_unique<MyFileInfo[]>(static_cast<size_t>(count) + 1);
    for (int i = 0; i < count; ++i)
        grown[static_cast<size_t>(i)] = *getfileInfo(i);
    rare().fileInfo = std::move(grown);
    return rare().fileInfoCount++;
}

void TabRec::clearFileInfo() {
    if (!m_rare)
        return;
    m_rare->fileInfo.reset();
    m_rare->fileInfoCount = 0;
}

void TabRec::setfileInfo(int number, const MyFileInfo& info) {
    if (MyFileInfo* element = getfileInfo(number))
        *element = info;
}

MyFileInfo* TabRec::getfileInfo(int number) {
    return number >= 0 && number < fileInfoCount() ? &m_rare->fileInfo[static_cast<size_t>(number)]
                                                   : nullptr;
}
