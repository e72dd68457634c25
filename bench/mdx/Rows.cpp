#include "Rows.h"

#include "platform/mdx/MdxBuild.h"

#include <cstring>
#include <random>

namespace bench {

volatile uint64_t sink = 0;

std::vector<Row> makeRows(size_t count, uint32_t seed) {
    std::mt19937_64 random(seed);
    const auto guid = [&random] {
        std::string text(32, '0');
        for (char& c : text)
            c = "0123456789abcdef"[random() % 16];
        return text;
    };
    std::mt19937_64 folderRandom(7); // the same folders in every table
    std::vector<std::string> folders(std::max<size_t>(16, 2000));
    for (std::string& folder : folders) {
        folder.assign(32, '0');
        for (char& c : folder)
            c = "0123456789abcdef"[folderRandom() % 16];
    }
    static const char* const words[] = {"pump",  "valve",  "station", "boiler", "line",
                                        "tank",  "heater", "circuit", "sensor", "panel",
                                        "motor", "drive",  "mixer",   "filter", "cooler"};
    std::vector<Row> rows(count);
    for (Row& row : rows) {
        row.key = guid();
        row.folder = folders[random() % folders.size()];
        row.name = std::string(words[random() % 15]) + " " + words[random() % 15] + " " +
                   std::to_string(random() % 10000);
        row.type = static_cast<int32_t>(random() % 4);
        row.parameters.assign(60 + random() % 40, 'p');
    }
    return rows;
}

MDArray* makeArray() {
    MDArray* array = nullptr;
    MDACreate(&array, 0);
    using orvo::mdx::addField;
    addField(array, "KeyLink", MDX_TEXT);
    addField(array, "type_", MDX_INTEGER);
    addField(array, "folder", MDX_TEXT);
    addField(array, "name", MDX_TEXT);
    addField(array, "parameters", MDX_TEXT);
    return array;
}

void fill(MDArray* array, const std::vector<Row>& rows) {
    orvo::mdx::RecordWriter writer(array);
    for (const Row& row : rows) {
        writer.begin();
        writer.text1251(0, row.key.data(), row.key.size());
        writer.integer(1, row.type);
        writer.text1251(2, row.folder.data(), row.folder.size());
        writer.text1251(3, row.name.data(), row.name.size());
        writer.text1251(4, row.parameters.data(), row.parameters.size());
        writer.end();
    }
    writer.finish();
}

} // namespace bench
