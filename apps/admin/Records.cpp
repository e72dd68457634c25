#include "apps/admin/Records.h"

#include "apps/admin/Failure.h"
#include "frame/StdText.h"
#include "platform/mdx/MdxBuild.h"
#include "platform/store/Names.h"

#include <QString>
#include <QUuid>

#include <algorithm>

namespace orvo::admin {

namespace {

MDRVar typed(MdxType type) {
    MDRVar value{};
    value.type = type;
    return value;
}

MDRVar textValue(const std::string& bytes) {
    MDRVar value = typed(MDX_TEXT);
    value.value.text = {static_cast<uint32_t>(bytes.size()), bytes.c_str()};
    return value;
}

} // namespace

std::string Row::text(const char* field) const {
    uint32_t length = 0;
    const char* pointer = nullptr;
    if (!m_record ||
        MDRGetTextRef(MDRFldByName(m_record->owner, field), m_record, &length, &pointer))
        return {};
    return mdx::toUtf8({pointer, length});
}

int Row::integer(const char* field) const {
    int32_t value = 0;
    if (m_record)
        MDRGetAsInt32(MDRFldByName(m_record->owner, field), m_record, &value);
    return value;
}

bool Row::isNull(const char* field) const {
    MDRVar value{};
    value.null = 1;
    if (m_record)
        MDRGetVal(MDRFldByName(m_record->owner, field), m_record, &value);
    return value.null || value.type == MDX_NONE;
}

Table::Table(store::Store& store, const char* name) : m_name(name) {
    require(store.fetch(name, m_records.array),
            StdText::tr("таблица ") + name + StdText::tr(" не читается"));
}

int Table::count() const {
    return static_cast<int>(mdx::postedCount(m_records.array));
}

Row Table::at(int place) const {
    return Row(mdx::postedRecord(m_records.array, static_cast<uint32_t>(place)));
}

Row Table::byKey(const std::string& key) const {
    const std::string bytes = mdx::toCp1251(key);
    const MDRVar value = textValue(bytes);
    return Row(key.empty() ? nullptr : MDARecSeekV(m_records.array, 0, &value, nullptr));
}

int Table::placeOf(const Row& row) const {
    if (m_places.empty()) {
        m_places.reserve(static_cast<size_t>(count()));
        for (int i = 0, end = count(); i < end; ++i)
            m_places.emplace_back(at(i).m_record, i);
        std::sort(m_places.begin(), m_places.end());
    }
    const auto found = std::lower_bound(m_places.begin(), m_places.end(),
                                        std::pair<const MDRData*, int>(row.m_record, 0));
    return row && found != m_places.end() && found->first == row.m_record ? found->second : -1;
}

std::vector<std::string> Table::texts(const char* field) const {
    std::vector<std::string> all;
    for (int i = 0, end = count(); i < end; ++i)
        all.push_back(at(i).text(field));
    return all;
}

Row Table::find(const std::function<bool(const Row&)>& test) const {
    for (int i = 0, end = count(); i < end; ++i)
        if (const Row row = at(i); test(row))
            return row;
    return {};
}

Batch::Batch(const char* table) : m_definition(store::findTable(table)) {
    if (!m_definition)
        throw Failure(StdText::tr("нет таблицы ") + table);
}

Batch& Batch::begin(std::string_view key, uint32_t flag) {
    post();
    if (!m_records) {
        m_records.emplace();
        if (store::makeStructure(*m_definition, m_records->array) != MDX_OK)
            throw Failure(StdText::tr("не хватает памяти для таблицы ") + m_definition->name);
    }
    m_open = MDARecNew(m_records->array);
    if (!m_open || MDRSetFlags(m_open, flag) != MDX_OK)
        throw Failure(StdText::tr("не хватает памяти для таблицы ") + m_definition->name);
    return text(field::KeyLink, key);
}

void Batch::set(const char* field, const MDRVar& value) {
    const MDRField handle = MDRFldByName(m_records->array, field);
    if (MDRSetVal(handle, m_open, &value) != MDX_OK || MDRSetUser(handle, m_open, 1) != MDX_OK)
        throw Failure(StdText::tr("поле ") + m_definition->name + "." + field +
                      StdText::tr(" не принимает значение"));
}

Batch& Batch::text(const char* field, std::string_view utf8) {
    const std::string bytes = mdx::toCp1251(utf8);
    set(field, textValue(bytes));
    return *this;
}

Batch& Batch::integer(const char* field, int value) {
    MDRVar var = typed(MDX_INTEGER);
    var.value.integer = value;
    set(field, var);
    return *this;
}

Batch& Batch::flag(const char* field, bool value) {
    MDRVar var = typed(MDX_BOOLEAN);
    var.value.boolean = value ? 1 : 0;
    set(field, var);
    return *this;
}

Batch& Batch::date(const char* field, double value) {
    MDRVar var = typed(MDX_DATE);
    var.value.date = value;
    set(field, var);
    return *this;
}

Batch& Batch::null(const char* field) {
    MDRVar var = typed(MDX_NONE);
    var.null = 1;
    set(field, var);
    return *this;
}

void Batch::post() {
    if (!m_open)
        return;
    if (MDARecPost(m_open, nullptr) != MDX_OK)
        throw Failure(StdText::tr("не хватает памяти для таблицы ") + m_definition->name);
    m_open = nullptr;
    ++m_count;
}

void Batch::send(store::Store& store, const std::string& what) {
    post();
    if (m_count == 0)
        return;
    require(store.update(m_definition->name, m_records->array), what);
    m_records.reset();
    m_count = 0;
}

std::string newKey() {
    return QUuid::createUuid().toByteArray(QUuid::Id128).toStdString();
}

void requireStorable(std::string_view utf8, const std::string& what) {
    for (size_t i = 0; i < utf8.size(); ++i)
        if (store::controlLength(utf8.substr(i)) > 0)
            throw Failure(what + StdText::tr(" содержит управляющий знак"));
    if (mdx::toUtf8(mdx::toCp1251(utf8)) != utf8)
        throw Failure(what + StdText::tr(" «") + std::string(utf8) +
                      StdText::tr("» содержит знаки, которых нет в кодировке Windows-1251"));
}

std::string folded(const std::string& text) {
    return QString::fromStdString(text).toCaseFolded().toStdString();
}

bool sameText(const std::string& a, const std::string& b) {
    return QString::fromStdString(a).compare(QString::fromStdString(b), Qt::CaseInsensitive) == 0;
}

} // namespace orvo::admin
