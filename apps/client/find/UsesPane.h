// UsesPane.h: the pane "Где используется": the places in which a record is used, each with a way to
// go there. It stays as it is asked, and follows what others change.
#ifndef ORVO_APPS_CLIENT_FIND_USESPANE_H
#define ORVO_APPS_CLIENT_FIND_USESPANE_H

#include "apps/client/find/FindModel.h"
#include "apps/client/find/UsesFeed.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QTreeView;

namespace orvo::app {

class UsesPane : public QWidget {
    Q_OBJECT
public:
    static constexpr int mostShown = 1000;

    /// The feed outlives it.
    UsesPane(UsesFeed& feed, const QString& iconsPath, QWidget* parent = nullptr);
    ~UsesPane() override;

    /// Lists where that is used from now on, while it can be seen.
    void showUses(const catalogue::Subject& subject);
    QTreeView* view() const { return m_view; }

signals:
    void showRequested(const QString& table, const QString& key, const QString& desktop);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void watch();
    void take(const catalogue::Uses& uses);
    void note(const catalogue::Uses& uses);
    void showCurrent();
    void updateActions();
    void showContextMenu(const QPoint& point);

    UsesFeed& m_feed;
    FindModel m_model;
    std::vector<catalogue::Subject> m_subjects; ///< one, or none yet
    QString m_what;                             ///< last known words for what it is about
    QLabel* m_note;                             // these: children
    QTreeView* m_view;
    QPushButton* m_show;
};

} // namespace orvo::app

#endif
