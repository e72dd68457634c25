// StorePage.h: asks which store is to be opened: the page that a first start shows, and what
// «Клиент → Открыть хранилище…» shows later.
#ifndef ORVO_APPS_CLIENT_START_STOREPAGE_H
#define ORVO_APPS_CLIENT_START_STOREPAGE_H

#include "apps/client/start/StoreMaker.h"

#include <QDialog>

#include <functional>

class QCommandLinkButton;
class QLabel;
class QListWidget;
class QPushButton;
class QVBoxLayout;

namespace orvo::app {

/// A store that the user has chosen.
struct ChosenStore {
    QString address;  ///< without any password
    QString password; ///< for libpq, where it is kept nowhere; empty: none is needed
};

class StorePage : public QDialog {
    Q_OBJECT
public:
    /// `ownFile`: the file of the embedded store, which need not be there. `user`: whom a server is
    /// asked for at first.
    StorePage(const QString& ownFile, const QString& user, QWidget* parent = nullptr);

    /// Says above everything else why the page is shown; empty: nothing is said.
    void setReason(const QString& text);
    /// Offers, before every other way, to try a store again that did not open.
    void offerAgain(const QString& address);
    /// After accept.
    const ChosenStore& chosen() const { return m_chosen; }

    /// Not while a store is being made.
    void reject() override;

private:
    void fit();
    void fillRecent();
    QCommandLinkButton* addWay(const char* name, const QString& title, const QString& what);
    void make(bool withDemonstration);
    void made(const QString& problem);
    void openFile();
    void askForServer();
    void openRecent();
    void forgetRecent();
    void take(const ChosenStore& store);

    const QString m_ownFile;
    const QString m_user;
    StoreMaker m_maker;
    ChosenStore m_chosen;
    QLabel *m_reason, *m_progress; // these: children
    QListWidget* m_recent;
    QWidget* m_recentPart;
    QWidget* m_ways;
    QVBoxLayout* m_waysColumn; ///< of its layout
    QPushButton* m_open;
};

/// The page, in front of everything, in an event loop of its own. `failed`: the store that did not
/// open for that reason; empty: there was none. False if the user wants none.
bool askForStore(const QString& ownFile, const QString& user, const QString& reason,
                 const QString& failed, ChosenStore* chosen);
/// Tells an operator, who has no other store to choose, that his desktop does not open for that
/// reason. False if it is not to be tried again.
bool askToRetryDesktop(const QString& reason);

/// The page in front of a client's window, without a loop of its own. What is chosen is opened in a
/// window of its own by another process, this program with `arguments` and the address; `fail`
/// tells why it could not be started.
void openFurtherStore(const QString& ownFile, const QString& user, QWidget* window,
                      const QStringList& arguments, std::function<void(const QString& why)> fail);

} // namespace orvo::app

#endif
