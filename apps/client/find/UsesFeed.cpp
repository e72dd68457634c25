#include "apps/client/find/UsesFeed.h"

#include <algorithm>

namespace orvo::app {

namespace {

constexpr int afterChangeMs = 200;

} // namespace

/// Questions by the number of their watch, and the answers.
struct UsesFeed::Look {
    struct One {
        uint64_t number;
        std::vector<catalogue::Subject> subjects;
        int most;
        catalogue::Uses uses;
    };
    std::vector<One> all;
};

UsesFeed::UsesFeed(catalogue::LiveCatalogue& live) : m_live(live) {
    m_soon.setSingleShot(true);
    connect(&m_soon, &QTimer::timeout, this, &UsesFeed::look);
    connect(&m_live, &catalogue::LiveCatalogue::loaded, this, &UsesFeed::outdate);
}

void UsesFeed::watch(QObject* receiver, const std::vector<catalogue::Subject>& subjects, int most,
                     const Tell& tell) {
    forget(receiver);
    m_watches.push_back({++m_last, receiver, subjects, most, tell, {}});
    m_soon.start(0);
}

void UsesFeed::forget(const QObject* receiver) {
    m_watches.erase(std::remove_if(m_watches.begin(), m_watches.end(),
                                   [receiver](const Watch& one) {
                                       return !one.receiver || one.receiver == receiver;
                                   }),
                    m_watches.end());
}

void UsesFeed::outdate() {
    if (!m_watches.empty() && !m_soon.isActive())
        m_soon.start(afterChangeMs);
}

void UsesFeed::look() {
    if (m_looks) { // what it finds may be out of date
        m_soon.start(afterChangeMs);
        return;
    }
    const auto look = std::make_shared<Look>();
    for (const Watch& watch : m_watches)
        if (watch.receiver)
            look->all.push_back({watch.number, watch.subjects, watch.most, {}});
    if (look->all.empty())
        return;
    m_looks = true;
    m_live.run(
        this,
        [look](const catalogue::Catalogue& records) {
            for (Look::One& one : look->all)
                one.uses = catalogue::usesOf(records, one.subjects, one.most);
        },
        [this, look] {
            m_looks = false;
            take(*look);
        });
}

/// Whoever is told may watch anew or go.
void UsesFeed::take(const Look& look) {
    for (const Look::One& one : look.all) {
        const auto watch = std::find_if(m_watches.begin(), m_watches.end(), [&](const Watch& each) {
            return each.number == one.number;
        });
        if (watch == m_watches.end() || !watch->receiver || watch->told == one.uses)
            continue;
        watch->told = one.uses;
        const Tell tell = watch->tell;
        tell(one.uses);
    }
}

} // namespace orvo::app
