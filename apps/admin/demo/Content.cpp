#include "apps/admin/demo/Content.h"

#include "apps/admin/Failure.h"

#include <QFile>

#include <cinttypes>
#include <cstdio>

namespace orvo::admin {

namespace {

std::string_view trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(' ');
    return begin == text.npos ? std::string_view()
                              : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

Outline parseLine(std::string_view line) {
    Outline node;
    if (line.size() > 1 && (line[0] == Outline::Folder || line[0] == Outline::Missing) &&
        line[1] == ' ') {
        node.mark = line[0] == Outline::Folder ? Outline::Folder : Outline::Missing;
        line.remove_prefix(2);
    }
    for (;;) {
        const size_t end = line.find('|');
        node.columns.emplace_back(trimmed(line.substr(0, end)));
        if (end == line.npos)
            return node;
        line.remove_prefix(end + 1);
    }
}

} // namespace

const std::string& Outline::column(size_t number) const {
    static const std::string none;
    return number < columns.size() ? columns[number] : none;
}

std::vector<Outline> parseOutline(std::string_view text) {
    Outline root;
    int number = 0;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ++number;
        const size_t indent = line.find_first_not_of(' ');
        if (indent == line.npos || line[indent] == '#')
            continue;
        Outline* parent = &root;
        for (size_t level = 0; level < indent / 2 && parent; ++level)
            parent = parent->children.empty() ? nullptr : &parent->children.back();
        if (indent % 2 != 0 || !parent)
            throw Failure("строка " + std::to_string(number) + " стоит не на своём отступе");
        parent->children.push_back(parseLine(line.substr(indent)));
    }
    return std::move(root.children);
}

std::string demoFile(const std::string& name) {
    QFile file(QStringLiteral(":/demo/") + QString::fromStdString(name));
    if (!file.open(QIODevice::ReadOnly))
        throw Failure("в программе нет образцовых данных «" + name + "»");
    return file.readAll().toStdString();
}

std::vector<Outline> demoOutline(const std::string& name) {
    return parseOutline(demoFile(name));
}

uint64_t mixed(uint64_t number) {
    number += 0x9e3779b97f4a7c15u;
    number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9u;
    number = (number ^ (number >> 27)) * 0x94d049bb133111ebu;
    return number ^ (number >> 31);
}

std::string demoKey(DemoKey kind, uint64_t number) {
    const auto kindCode = static_cast<uint64_t>(kind);
    char digits[33];
    std::snprintf(digits, sizeof digits, "%02x%010" PRIx64 "%04x%016" PRIx64,
                  static_cast<unsigned>(kindCode), number & 0xffffffffffu,
                  static_cast<unsigned>(mixed(number ^ 0x5bd1e995u) & 0xffffu),
                  mixed(number * 64 + kindCode));
    return digits;
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

} // namespace orvo::admin
