// Writes the seed corpora: sound images, raw records, key descriptions and clipboard payloads to
// start from.
#include "platform/mdx/MdxBuild.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

std::filesystem::path root;

void write(const char* folder, const char* name, const void* bytes, size_t size) {
    std::filesystem::create_directories(root / folder);
    std::ofstream out(root / folder / name, std::ios::binary);
    out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
}

MDArray* makeTable(int records) {
    MDArray* array = nullptr;
    MDACreate(&array, 0);
    const MdxType types[] = {MDX_TEXT, MDX_INTEGER, MDX_BOOLEAN, MDX_DATE, MDX_BLOCK};
    const char* const names[] = {"KeyLink", "type_", "flag", "stamp", "data"};
    for (int i = 0; i < 5; ++i)
        orvo::mdx::addField(array, names[i], types[i]);
    const char* const keys[] = {"KeyLink", "type_;KeyLink", "data;stamp"};
    for (const char* key : keys) {
        MDAKeyDescription description{};
        std::strcpy(description.name, key);
        description.flags = key == keys[0] ? 0 : 8;
        MDAKeyAdd(array, 1, &description);
    }
    orvo::mdx::RecordWriter writer(array);
    for (int i = 0; i < records; ++i) {
        const std::string key = "key " + std::to_string(i);
        writer.begin();
        writer.text1251(0, key.data(), key.size());
        if (i % 2)
            writer.integer(1, i % 3);
        writer.boolean(2, i % 3 == 0);
        writer.block(4, "\0\1\2\3", size_t(i % 5));
        writer.end();
    }
    writer.finish();
    return array;
}

/// A menu as the clipboard carries it: every other element a folder below the one before.
std::string makePayload(const char* mode, int records) {
    MDArray* array = nullptr;
    MDACreate(&array, 0);
    for (const char* name : {"KeyLink", "parent", "MenuResourceKey", "caption"})
        orvo::mdx::addField(array, name, MDX_TEXT);
    orvo::mdx::addField(array, "order_", MDX_INTEGER);
    for (const char* key : {"KeyLink", "parent;order_"}) {
        MDAKeyDescription description{};
        std::strcpy(description.name, key);
        description.flags = std::strchr(key, ';') ? 8 : 0;
        MDAKeyAdd(array, 1, &description);
    }
    std::string keys;
    orvo::mdx::RecordWriter writer(array);
    for (int i = 0; i < records; ++i) {
        const std::string key = "k" + std::to_string(i);
        const std::string parent = "k" + std::to_string(i / 2);
        writer.begin();
        writer.text1251(0, key.data(), key.size());
        if (i > 0)
            writer.text1251(1, parent.data(), parent.size());
        if (i % 2)
            writer.text1251(2, "r", 1);
        writer.integer(4, i * 1000);
        writer.end();
        if (i % 3 == 0)
            keys += key + ';';
    }
    writer.finish();
    void* bytes = nullptr;
    const uint32_t size = MDAPack(array, &bytes);
    const std::string payload =
        mode + ('\n' + keys) + '\n' + std::string(static_cast<const char*>(bytes), size);
    MDMemFree(bytes);
    MDADestroy(array);
    return payload;
}

/// A row of the change log, its values in their order.
std::string change(char code, const char* key, const char* after) {
    return std::string(1, code) +
           "\x1e"
           "Menu\x1e" +
           key +
           "\x1e"
           "anna\x1e" +
           after;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    root = argv[1];
    for (const int records : {0, 1, 3, 40}) {
        MDArray* array = makeTable(records);
        const std::string name = "seed" + std::to_string(records);
        void* bytes = nullptr;
        uint32_t size = MDAPack(array, &bytes);
        write("image", name.c_str(), bytes, size);
        MDMemFree(bytes);
        if (const MDRData* record = orvo::mdx::postedRecord(array, uint32_t(records) / 2)) {
            size = orvo::mdx::rawRecord(record, &bytes);
            write("raw_record", name.c_str(), bytes, size);
            MDMemFree(bytes);
        }
        MDADestroy(array);
        const std::string payload = makePayload(records % 2 ? "1" : "0", records);
        write("menu_payload", name.c_str(), payload.data(), payload.size());
    }
    const char* const exports[] = {
        R"({"format":"orvo-export","version":1,"tables":{"Users":[{"KeyLink":"a","program":true}],)"
        R"("MenuFileExt":[],"MenuResourceFolder":[{"KeyLink":"f","type_":-3,"caption":null}],)"
        R"("MenuResource":[{"KeyLink":"r","dateTimeEdit":1.5}],"MenuFolder":[],"Menu":[]},)"
        R"("files":[{"KeyLink":"c","name_":"n","size":4,"data":["dGV4","dA=="]}]})",
        R"({"format":"orvo-export","version":1,"files":[],"tables":{"Menu":[{"caption":"\u0401"}]}})"};
    for (int i = 0; i < 2; ++i)
        write("export", std::to_string(i).c_str(), exports[i], std::strlen(exports[i]));
    const char* const keys[] = {"\x08"
                                "a;b",
                                "\x08"
                                "C;d;E;a",
                                "\x08"
                                "e",
                                "\x01"
                                "a"};
    for (int i = 0; i < 4; ++i)
        write("key_description", std::to_string(i).c_str(), keys[i], std::strlen(keys[i]));
    const std::string changes[] = {
        change('\0', "k1", R"({"KeyLink":"k1","parent":null,"caption":"\u0401","order_":1000})") +
            '\x1d' + change('\1', "k1", R"({"order_":2000,"oneCopy":true,"parent":"k2"})"),
        change('\0', "k2", R"({"KeyLink":"k2","caption":"b"})") + '\x1d' +
            change('\2', "k2", "{}") + '\x1d' + change('\1', "k2", R"({"caption":5,"x":[]})")};
    for (int i = 0; i < 2; ++i)
        write("change", std::to_string(i).c_str(), changes[i].data(), changes[i].size());
    return 0;
}
