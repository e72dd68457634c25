#include "catalogue/SearchTexts.h"

#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <array>
#include <bit>

namespace orvo::catalogue {

static_assert(std::endian::native == std::endian::little, "the first letter is the lowest");

namespace {

char foldedLetter(char letter) {
    static const std::array<char, 256> table = [] {
        std::array<char, 256> all{};
        for (size_t i = 0; i < all.size(); ++i)
            all[i] = static_cast<char>(foldedByte(static_cast<uint8_t>(i)));
        const std::string from = mdx::toCp1251("ёЁ");
        const std::string to = mdx::toCp1251("е");
        for (const char other : from)
            all[static_cast<uint8_t>(other)] = to.front();
        all[0] = ' ';
        all[endOfName] = ' ';
        return all;
    }();
    return table[static_cast<uint8_t>(letter)];
}

/// The fields that are looked at, by table.
struct Fields {
    explicit Fields(const char* table) : def(*store::findTable(table)) {}
    const store::TableDef& def;
    int of(const char* field) const { return def.find(field); }
};

struct KnownFields {
    int userLogin, userLast, userFirst, userMiddle;
    int elementCaption, elementParams, elementResource;
    int resourceName, resourceCaption, resourceParams;
    KnownFields() {
        const Fields users(table::Users), elements(table::Menu), resources(table::MenuResource);
        userLogin = users.of(field::login_);
        userLast = users.of(field::lastName);
        userFirst = users.of(field::firstName);
        userMiddle = users.of(field::midlName);
        elementCaption = elements.of(field::caption);
        elementParams = elements.of(field::params);
        elementResource = elements.of(field::MenuResourceKey);
        resourceName = resources.of(field::name_);
        resourceCaption = resources.of(field::caption);
        resourceParams = resources.of(field::params);
    }
};

const KnownFields& known() {
    static const KnownFields fields;
    return fields;
}

} // namespace

void append(std::string& text, std::string_view cp1251) {
    for (const char letter : cp1251)
        text.push_back(foldedLetter(letter));
}

std::vector<uint32_t> partsOf(const std::string& word) {
    std::vector<uint32_t> parts;
    if (word.size() == 3)
        parts.push_back(partOfThree(letters(word.c_str()))); // with the zero byte behind it
    for (size_t i = 0; i + 4 <= word.size(); ++i)
        parts.push_back(partOfFour(letters(word.data() + i)));
    return parts;
}

uint8_t placeOfTable(const Record& record) {
    uint8_t place = 0;
    for (const char* name : {table::MenuFolder, table::Users, table::MenuResourceFolder,
                             table::Menu, table::MenuResource}) {
        if (record.isIn(name))
            return place;
        ++place;
    }
    return place;
}

bool isSearched(const Record& record) {
    return record && !record.isIn(table::MenuFileExt);
}

void appendTexts(const Catalogue& catalogue, const Record& record, std::string& text) {
    const KnownFields& f = known();
    const auto add = [&](int field, char separator = ' ') {
        if (record.cp1251(field).empty())
            return;
        append(text, record.cp1251(field));
        text.push_back(separator);
    };
    if (record.isIn(table::Users)) {
        for (const int field : {f.userLast, f.userFirst, f.userMiddle})
            add(field);
        text.push_back(endOfName);
        add(f.userLogin);
    } else if (record.isIn(table::Menu)) {
        append(text, record.cp1251(f.elementCaption));
        text.push_back(endOfName);
        if (const Record object = catalogue.linked(record, f.elementResource)) {
            append(text, object.cp1251(f.resourceName));
            text.push_back(' ');
        }
        add(f.elementParams);
    } else if (record.isIn(table::MenuResource)) {
        add(f.resourceCaption);
        add(f.resourceName);
        text.push_back(endOfName);
        add(f.resourceParams);
    } else {
        append(text, record.cp1251(record.table().find(field::caption)));
        text.push_back(endOfName);
    }
    append(text, record.cp1251(0));
}

int resourceNameField() {
    return known().resourceName;
}

} // namespace orvo::catalogue
