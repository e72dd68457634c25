// Files for orvo-admin import, as anyone may hand them over: whatever is in them, a store is given
// whole records of known tables, and as many bytes of a file as were promised.
#include "Exercise.h"

#include "apps/admin/transfer/Format.h"

#include <cstdio>
#include <memory>

using namespace orvo::store;

namespace {

class Check : public Receiver {
public:
    Status expect(uint64_t /*records*/, uint64_t /*contents*/, uint64_t /*bytes*/) override {
        return {};
    }
    Status record(const TableDef& table, const std::vector<Value>& values,
                  const std::string& place) override {
        fuzz::require(findTable(table.name) == &table, "a table of the dictionary");
        fuzz::require(values.size() == table.fields.size(), "a value for each field");
        fuzz::require(!place.empty() && m_left == 0, "a place, and the last file whole");
        return {};
    }
    Status content(const std::vector<Value>& values, const std::string& place) override {
        const TableDef& table = contentTable();
        fuzz::require(values.size() == table.fields.size(), "a value for each field");
        fuzz::require(!place.empty() && m_left == 0, "a place, and the last file whole");
        const auto size = std::get<int64_t>(values[static_cast<size_t>(table.find("size"))]);
        if (size < 0)
            return {Refused, "size"}; // as a store does
        m_left = static_cast<uint64_t>(size);
        return {};
    }
    Status bytes(std::string_view piece) override {
        fuzz::require(piece.size() <= m_left, "no more bytes than promised");
        m_left -= piece.size();
        return {};
    }
    bool whole() const { return m_left == 0; }

private:
    uint64_t m_left = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string copy(reinterpret_cast<const char*>(data), size);
    const std::unique_ptr<std::FILE, Close> file(fmemopen(copy.data(), copy.size(), "r"));
    Check into;
    orvo::admin::TransferCount count;
    const Status status = orvo::admin::readExport(file.get(), size, into, {}, &count);
    fuzz::require(status.ok() ? into.whole() : !status.text.empty(), "whole, or a reason");
    return 0;
}
