// Content.h: the texts of the demonstration installation, read from the outlines in demo/data, and
// its keys.
#ifndef ORVO_ADMIN_DEMO_CONTENT_H
#define ORVO_ADMIN_DEMO_CONTENT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::admin {

/// One line of an outline and the lines indented below it (two blanks a level). The line is cut at
/// "|" into columns without blanks around them. A line "+ caption" is a folder, "? caption" one
/// that does not exist. Lines that begin with "#", and empty ones, are passed over.
struct Outline {
    enum Mark : char { Plain = 0, Folder = '+', Missing = '?' };
    Mark mark = Plain;
    std::vector<std::string> columns;
    std::vector<Outline> children;

    /// The column, empty if the line has fewer.
    const std::string& column(size_t number) const;
};

/// Throws Failure at the first line that stands deeper than a child may.
std::vector<Outline> parseOutline(std::string_view text);
/// The bytes of a file embedded under ":/demo/". Throws Failure if there is none.
std::string demoFile(const std::string& name);
/// parseOutline of demoFile.
std::vector<Outline> demoOutline(const std::string& name);

/// What a key of the demonstration names.
enum class DemoKey : uint8_t {
    ResourceFolder = 0x11,
    Resource = 0x12,
    Desktop = 0x13,
    Element = 0x14,
    User = 0x15,
    Extension = 0x16,
};
/// The same key of 32 hexadecimal digits for the same number in every run. Keys rise with their
/// numbers, so that a bulk load appends to the indexes.
std::string demoKey(DemoKey kind, uint64_t number);
/// Evenly spread bits of a number, the same in every run.
uint64_t mixed(uint64_t number);
/// `text` with every `from` replaced.
std::string replaced(std::string text, std::string_view from, std::string_view to);

/// The time of the demonstration's locks and files: 2024-03-14 07:00 UTC.
inline constexpr double demoTime = 1710399600;

} // namespace orvo::admin

#endif
