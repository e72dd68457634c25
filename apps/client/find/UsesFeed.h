// UsesFeed.h: tells where records are used, as it is and whenever it changes.
//
// It looks in the catalogue, on that one's thread; changes that come together are looked at once.
#ifndef ORVO_APPS_CLIENT_FIND_USESFEED_H
#define ORVO_APPS_CLIENT_FIND_USESFEED_H

#include "catalogue/LiveCatalogue.h"
#include "catalogue/Uses.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

namespace orvo::app {

class UsesFeed : public QObject {
    Q_OBJECT
public:
    using Tell = std::function<void(const catalogue::Uses& uses)>;

    /// The catalogue outlives it.
    explicit UsesFeed(catalogue::LiveCatalogue& live);

    bool isKnown() const { return m_live.isLoaded(); }
    /// Tells the receiver as soon as it is known and then each time it is different, until the
    /// receiver goes or watches anew. At most `most` places are told. Never before this returns.
    void watch(QObject* receiver, const std::vector<catalogue::Subject>& subjects, int most,
               const Tell& tell);
    /// Tells that receiver nothing more.
    void forget(const QObject* receiver);
    /// Records have changed.
    void outdate();

private:
    struct Watch {
        uint64_t number;
        QPointer<QObject> receiver;
        std::vector<catalogue::Subject> subjects;
        int most;
        Tell tell;
        std::optional<catalogue::Uses> told;
    };
    struct Look;

    void look();
    void take(const Look& look);

    catalogue::LiveCatalogue& m_live;
    std::vector<Watch> m_watches;
    uint64_t m_last = 0; ///< number given out
    QTimer m_soon;
    bool m_looks = false; ///< a look is being taken
};

} // namespace orvo::app

#endif
