#include "platform/client/WriteRequest.h"

#include "frame/StdText.h"
#include "platform/client/Blocks.h"
#include "platform/mdx/MdxBuild.h"

#include <memory>

namespace orvo::client {

namespace {

/// Sets a field and marks it.
void setValue(MDRData* record, int number, const store::FieldDef& field,
              const store::Value& value) {
    MDRVar var{};
    std::string bytes;
    var.type = static_cast<MdxType>(field.type);
    if (const auto* text = std::get_if<std::string>(&value)) {
        bytes = mdx::toCp1251(*text);
        var.value.text.pointer = bytes.c_str();
        var.value.text.length = static_cast<uint32_t>(bytes.size());
    } else if (const auto* date = std::get_if<double>(&value)) {
        var.value.date = *date;
    } else if (const auto* number64 = std::get_if<int64_t>(&value)) {
        if (field.type == MDX_BOOLEAN)
            var.value.boolean = *number64 != 0 ? 1 : 0;
        else
            var.value.integer = static_cast<int32_t>(*number64);
    } else {
        var = {};
        var.null = 1;
    }
    const MDRField handle = MDRFldByNum(record->owner, number);
    if (MDRSetVal(handle, record, &var) == MDX_OK)
        MDRSetUser(handle, record, 1);
}

/// Unpacks the image of a request's records; null if it does not hold.
std::unique_ptr<CMDArray> unpacked(const WriteRequest& request) {
    auto array = std::make_unique<CMDArray>();
    if (MDAUnpackN(array->array, request.records.constData(),
                   static_cast<uint32_t>(request.records.size())) != MDX_OK)
        return nullptr;
    return array;
}

std::vector<store::FileToPut> toPut(const WriteRequest& request) {
    std::vector<store::FileToPut> files;
    for (const WriteRequest::File& file : request.files)
        files.push_back({file.path.toStdString(),
                         file.name.toStdString(),
                         {file.bytes.constData(), static_cast<size_t>(file.bytes.size())},
                         file.time});
    return files;
}

} // namespace

WriteRequest WriteRequest::ofRecords(std::string_view table, const MDArray* records) {
    WriteRequest request;
    request.table = table;
    request.callersRecords = records;
    return request;
}

void WriteRequest::keep() {
    if (callersRecords) {
        void* image = nullptr;
        const uint32_t length = MDAPack(callersRecords, &image);
        const std::unique_ptr<void, MemFree> owner(image);
        records = QByteArray(static_cast<const char*>(image), static_cast<int>(length));
        callersRecords = nullptr;
    }
    for (File& file : files)
        file.bytes.detach();
}

size_t WriteRequest::size() const {
    auto total = static_cast<size_t>(records.size());
    for (const File& file : files)
        total += static_cast<size_t>(file.bytes.size());
    return total;
}

std::vector<RecordWrite> recordsOf(const WriteRequest& request) {
    std::vector<RecordWrite> records;
    const store::TableDef* table = store::findTable(request.table);
    if (request.kind != WriteRequest::Records || !table)
        return records;
    const std::unique_ptr<CMDArray> own = request.callersRecords ? nullptr : unpacked(request);
    const MDArray* array = own ? own->array : request.callersRecords;
    if (!array)
        return records;
    const store::WritePlan plan(*table, array);
    for (uint32_t entry = 0; entry < plan.count(); ++entry) {
        store::Write write;
        if (!plan.write(entry, &write).ok())
            return {};
        records.push_back({static_cast<uint32_t>(write.flag), write.key, std::move(write.values)});
    }
    return records;
}

WriteRequest requestOf(const store::TableDef& table, const std::vector<RecordWrite>& records) {
    CMDArray array;
    if (store::makeStructure(table, array.array) != MDX_OK)
        return {};
    for (const RecordWrite& write : records) {
        MDRData* record = MDARecNew(array.array);
        if (!record)
            return {};
        MDRSetFlags(record, write.flag);
        setValue(record, 0, table.fields.front(), write.key);
        for (const auto& [number, value] : write.values)
            setValue(record, number, table.fields[static_cast<size_t>(number)], value);
        array.RecPost(record);
    }
    WriteRequest request = WriteRequest::ofRecords(table.name, array.array);
    request.keep();
    return request;
}

namespace {

store::Status call(const WriteRequest& request, store::Store& store, store::UpdateGuard* guard) {
    switch (request.kind) {
    case WriteRequest::Records: {
        if (request.callersRecords)
            return store.update(request.table, request.callersRecords, guard);
        const std::unique_ptr<CMDArray> array = unpacked(request);
        if (!array)
            return {store::BadStructure, StdText::tr("Записи не читаются.")};
        return store.update(request.table, array->array, guard);
    }
    case WriteRequest::FormPut:
        return store.formPut(request.formPath.toStdString(), toPut(request));
    case WriteRequest::FilePut:
        return store.filePut(toPut(request));
    case WriteRequest::FormDelete: {
        std::vector<std::string> names;
        for (const WriteRequest::File& file : request.files)
            names.push_back(file.name.toStdString());
        return store.formDelete(names);
    }
    case WriteRequest::FileDelete: {
        std::vector<std::pair<std::string, std::string>> names;
        for (const WriteRequest::File& file : request.files)
            names.emplace_back(file.path.toStdString(), file.name.toStdString());
        return store.fileDelete(names);
    }
    }
    return {store::BadArguments, StdText::tr("Неизвестная операция.")};
}

} // namespace

store::Status perform(const WriteRequest& request, store::Store& store, store::UpdateGuard* guard,
                      bool* unknown) {
    const std::string before = store.lastWritten().call;
    store::Status status = call(request, store, guard);
    // A call that failed before it reached the database leaves what an earlier one has told.
    *unknown = !status.ok() && store.lastWritten().unknown && store.lastWritten().call != before;
    return status;
}

bool isSound(const WriteRequest& request) {
    switch (request.kind) {
    case WriteRequest::Records:
        return !recordsOf(request).empty();
    case WriteRequest::FormPut:
    case WriteRequest::FilePut:
        for (const WriteRequest::File& file : request.files)
            if (!store::isPlainFileName(file.name.toStdString()))
                return false;
        return !request.files.empty();
    case WriteRequest::FormDelete:
    case WriteRequest::FileDelete:
        return !request.files.empty();
    }
    return false;
}

} // namespace orvo::client
