#include "platform/mdx/MdxBuild.h"
#include "platform/mdx/RecordBatches.h"
#include "platform/mdx/RunInParallel.h"
#include "platform/mdx/Table.h"

#include <optional>

namespace orvo::mdx {

namespace {

using Kind = RecordBatches::Kind;

/// So many records are composed at once; of more, a second thread composes the rest while the
/// caller fetches them.
constexpr size_t fewRecords = 4096;

} // namespace

struct RecordWriter::Private {
    explicit Private(Array* array) : composer(array) {}

    RecordComposer composer;
    size_t begun = 0;
    std::optional<RecordBatches> batches; ///< after the composer, which it uses to its end

    void begin() {
        if (++begun > fewRecords && !batches && begun % fewRecords == 1)
            getHelp();
        if (batches)
            batches->mark(Kind::Begin);
        else
            composer.begin();
    }
    void getHelp() {
        if (!hasSecondProcessor())
            return;
        try {
            batches.emplace(composer);
        } catch (const std::bad_alloc&) {
        } catch (const std::system_error&) { // no thread to be had
        }
    }
};

RecordWriter::RecordWriter(MDArray* array) : d(nullptr) {
    guarded([&] {
        d = new Private(array ? arrayOf(array) : nullptr);
        return MDX_OK;
    });
}

RecordWriter::~RecordWriter() {
    finish();
    delete d;
}

void RecordWriter::begin() {
    if (d)
        d->begin();
}

void RecordWriter::boolean(int field, bool value) {
    if (d && d->batches)
        d->batches->number(Kind::Boolean, field, int32_t(value));
    else if (d)
        d->composer.boolean(field, value);
}

void RecordWriter::integer(int field, int32_t value) {
    if (d && d->batches)
        d->batches->number(Kind::Integer, field, value);
    else if (d)
        d->composer.integer(field, value);
}

void RecordWriter::date(int field, double value) {
    if (d && d->batches)
        d->batches->number(Kind::Date, field, value);
    else if (d)
        d->composer.date(field, value);
}

void RecordWriter::textUtf8(int field, const char* text, size_t length) {
    if (d && d->batches)
        d->batches->bytes(Kind::Utf8, field, text, length);
    else if (d)
        d->composer.textUtf8(field, text, length);
}

void RecordWriter::text1251(int field, const char* text, size_t length) {
    if (d && d->batches)
        d->batches->bytes(Kind::Cp1251, field, text, length);
    else if (d)
        d->composer.text1251(field, text, length);
}

void RecordWriter::block(int field, const void* bytes, size_t length) {
    if (d && d->batches)
        d->batches->bytes(Kind::Bytes, field, bytes, length);
    else if (d)
        d->composer.block(field, bytes, length);
}

void RecordWriter::end() {
    if (d && d->batches)
        d->batches->mark(Kind::End);
    else if (d)
        d->composer.end();
}

int RecordWriter::finish() {
    if (!d)
        return MDX_E_MEMORY;
    d->batches.reset();
    d->begun = 0;
    return d->composer.finish();
}

} // namespace orvo::mdx
