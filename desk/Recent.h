// Recent.h: the elements that an operator has opened last, kept between runs.
#ifndef ORVO_DESK_RECENT_H
#define ORVO_DESK_RECENT_H

#include <QString>
#include <QStringList>

namespace orvo::desk {

class Recent {
public:
    static constexpr int most = 5;

    /// Those of a desktop; whatever the file holds, at most `most` keys of a bounded length.
    explicit Recent(QString desktop);
    /// The one used last comes first.
    const QStringList& keys() const { return m_keys; }
    void use(const QString& key);

private:
    QString m_desktop;
    QStringList m_keys;
};

} // namespace orvo::desk

#endif
