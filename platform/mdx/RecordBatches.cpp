#include "platform/mdx/RecordBatches.h"

namespace orvo::mdx {

RecordBatches::RecordBatches(RecordComposer& composer) : m_composer(composer) {
    for (Batch& batch : m_batches)
        batch.bytes = std::make_unique_for_overwrite<uint8_t[]>(batchSize);
    m_thread = std::thread([this] { work(); });
}

RecordBatches::~RecordBatches() {
    drain();
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void RecordBatches::bytes(Kind kind, int field, const void* bytes, size_t length) noexcept {
    if (length <= longest) {
        uint8_t* at = head(kind, field, 4 + length);
        store(at, static_cast<uint32_t>(length));
        if (length > 0)
            std::memcpy(at + 4, bytes, length);
        return;
    }
    drain(); // the composer is this thread's until the next batch is given
    const auto* text = static_cast<const char*>(bytes);
    if (kind == Kind::Utf8)
        m_composer.textUtf8(field, text, length);
    else if (kind == Kind::Cp1251)
        m_composer.text1251(field, text, length);
    else
        m_composer.block(field, bytes, length);
}

// Hands the batch over, and waits for a free one.
void RecordBatches::give() noexcept {
    std::unique_lock lock(m_mutex);
    ++m_given;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_given < batches; });
    lock.unlock();
    m_filling = (m_filling + 1) % batches;
    m_batches[m_filling].size = 0;
}

// Until everything given is composed.
void RecordBatches::drain() noexcept {
    give();
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_given == 0; });
}

void RecordBatches::work() noexcept {
    size_t next = 0;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_given > 0 || m_ending; });
        if (m_given == 0)
            return;
        lock.unlock();
        compose(m_batches[next]);
        next = (next + 1) % batches;
        lock.lock();
        --m_given;
        m_changed.notify_all();
    }
}

void RecordBatches::compose(const Batch& batch) noexcept {
    const uint8_t* at = batch.bytes.get();
    const uint8_t* const end = at + batch.size;
    while (at < end) {
        const auto kind = static_cast<Kind>(at[0]);
        const int field = at[1];
        at += 2;
        switch (kind) {
        case Kind::Begin:
            m_composer.begin();
            break;
        case Kind::End:
            m_composer.end();
            break;
        case Kind::Boolean:
            m_composer.boolean(field, load<int32_t>(at) != 0);
            at += 8;
            break;
        case Kind::Integer:
            m_composer.integer(field, load<int32_t>(at));
            at += 8;
            break;
        case Kind::Date:
            m_composer.date(field, load<double>(at));
            at += 8;
            break;
        case Kind::Utf8:
        case Kind::Cp1251:
        case Kind::Bytes: {
            const auto length = load<uint32_t>(at);
            const auto* text = reinterpret_cast<const char*>(at + 4);
            if (kind == Kind::Utf8)
                m_composer.textUtf8(field, text, length);
            else if (kind == Kind::Cp1251)
                m_composer.text1251(field, text, length);
            else
                m_composer.block(field, text, length);
            at += 4 + length;
        }
        }
    }
}

} // namespace orvo::mdx
