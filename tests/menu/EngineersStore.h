// EngineersStore.h: a store as engineers reach it, and what makes their writes fail there: on a
// server with a login that is no superuser, over a connection that can be cut.
//
//     auto kind = std::make_unique<EngineersKind>(std::move(inner));
//     EngineersKind& faults = *kind;
//     kind->renew();
//     TestStore store(std::move(kind));
//     faults.admitEngineers();
//     if (faults.begin(EngineersKind::NoRight)) { ...a write...; faults.end(); }
#ifndef ORVO_TESTS_MENU_ENGINEERSSTORE_H
#define ORVO_TESTS_MENU_ENGINEERSSTORE_H

#include "tests/store/StoreKinds.h"

#include <memory>

namespace orvo::test {

class EngineersKind : public store::test::StoreKind {
public:
    enum Fault {
        Locked,      ///< somebody keeps the writers' lock: a write waits, and fails in the end
        NoRight,     ///< writes are not allowed: by rights on a server, by triggers in a file
        RequestLost, ///< the connection breaks before the next request arrives; servers only
        AnswerLost,  ///< it breaks before the next answer comes; servers only
    };

    explicit EngineersKind(std::unique_ptr<StoreKind> inner);
    ~EngineersKind() override;

    QByteArray name() const override { return m_inner->name(); }
    bool renew() override;
    std::string url() const override;
    bool byHand(const QByteArray& sql, QByteArray* output = nullptr) override {
        return m_inner->byHand(sql, output);
    }
    /// At first url() is that of who may do anything, who fills the store; from here on that of an
    /// engineer.
    void admitEngineers() { m_admitted = true; }
    QByteArray handLogin() const override { return m_inner->handLogin(); }
    QByteArray rawText(const QByteArray& bytes) const override { return m_inner->rawText(bytes); }

    /// From now on writes fail so, until end(). False if this kind of store has no such fault.
    /// Nobody else writes meanwhile.
    bool begin(Fault fault);
    void end();

private:
    class Hand;
    class SqliteHand;
    class ServerHand;

    std::unique_ptr<StoreKind> m_inner;
    std::unique_ptr<Hand> m_hand;
    bool m_admitted = false;
};

} // namespace orvo::test

#endif
