#include "StoreTest.h"

namespace orvo::store::test {

std::unique_ptr<Store> StoreTest::another(const char* login) const {
    Status status;
    auto store = open(m_kind.url(), {login, false}, &status);
    if (!store)
        qWarning("%s", status.text.c_str());
    return store;
}

int64_t StoreTest::position() const {
    int64_t id = -1;
    const Status status = m_store->logPosition(&id);
    if (!status.ok())
        qWarning("%s", status.text.c_str());
    return id;
}

void StoreTest::init() {
    m_store.reset();
    QVERIFY(m_kind.renew());
    m_store = another("tester");
    QVERIFY(m_store);
}

void StoreTest::cleanup() {
    m_store.reset();
}

std::unique_ptr<QProcess> startWriter(const std::string& url, const char* login, const char* key,
                                      int count) {
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->start(QCoreApplication::applicationFilePath(),
                   {"--writer", QString::fromStdString(url), login, key, QString::number(count)});
    return process;
}

bool isWriter(int argc, char** argv, int* result) {
    if (argc != 6 || std::string_view(argv[1]) != "--writer")
        return false;
    Status status;
    const auto store = open(argv[2], {argv[3], false}, &status);
    for (int i = 0; store && status.ok() && i < atoi(argv[5]); ++i) {
        status = Batch("Menu")
                     .update(argv[4], {{"caption", QString("%1 %2").arg(argv[3]).arg(i)}})
                     .send(*store);
    }
    if (!status.ok())
        qWarning("%s: %s", argv[3], status.text.c_str());
    *result = status.ok() ? 0 : 1;
    return true;
}

} // namespace orvo::store::test
