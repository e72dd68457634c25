// Scene.h: the demonstration installation with two clients on it, and what an engineer does with
// his hands in one of them.
//
// Acts answer false if what they need is not on the screen in time; why() then says what.
#ifndef ORVO_TESTS_E2E_SCENE_H
#define ORVO_TESTS_E2E_SCENE_H

#include "tests/e2e/ClientProcess.h"
#include "tests/e2e/StoreView.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <optional>

namespace orvo::test {

class Scene {
public:
    /// How long a condition is waited for: what takes longer hangs, also on a machine that has
    /// other work.
    static constexpr int longestMs = 60000;

    /// Makes the store; starts no client. orvo-admin keeps the URL that the store has at first.
    explicit Scene(std::unique_ptr<store::test::StoreKind> kind = store::test::storeKind());

    bool startLeft(const QStringList& modules = {"Menu"}, const QString& login = "left",
                   const QRect& place = {5, 5, 1385, 960});
    bool startRight();
    /// An operator's desktop in place of the right client.
    bool startOperator(const QString& desktop, const QStringList& more = {},
                       const QRect& place = {1405, 5, 1385, 960});
    /// The same by another way to the store, as another user.
    bool startOperatorOn(const QString& url, const QString& login, const QString& desktop,
                         const QStringList& more, const QRect& place);
    void stopRight() { m_right.reset(); }
    ClientProcess& left() { return *m_left; }
    ClientProcess& right() { return *m_right; }
    const StoreView& store() const { return *m_store; }
    const char* why() const { return m_why.constData(); }

    /// Runs orvo-admin on the store; its exit code.
    int admin(const QStringList& arguments) const;

    /// Waits until both clients rest and show what the store holds. False after a while, with the
    /// difference in why().
    bool agree();
    /// Waits until `condition` holds.
    bool waitFor(const char* what, const std::function<bool()>& condition, int ms = longestMs);

    // Acts

    /// Brings the row into view, opening the folders above it, and clicks on it.
    bool clickRow(ClientProcess& client, const char* tree, const QString& text,
                  const QString& modifier = {}, int button = 1);
    /// The place of a row's cell on the screen, brought into view.
    std::optional<QRect> reveal(ClientProcess& client, const char* tree, const QString& text,
                                int column = 0);
    /// Clicks on the control of that name or text once it is on the screen, enabled and stands
    /// still.
    bool press(ClientProcess& client, const QString& nameOrText);
    bool pressAll(ClientProcess& client, const QStringList& path);
    /// Types into the value of a row of the passport; saves nothing.
    bool fill(ClientProcess& client, const QString& caption, const QString& text);
    /// Chooses in the picker that the "..." of a row of the passport opens.
    bool pick(ClientProcess& client, const QString& caption, const QString& name);
    /// Makes a desktop current in both clients.
    bool openDesktop(const QString& caption);

private:
    bool fail(const QString& why);
    /// What client and store disagree on; empty if nothing.
    QString difference(ClientProcess& client) const;
    QString desckDifference(const Tree& tree) const;
    QString menuDifference(ClientProcess& client, const QString& desktop) const;

    QTemporaryDir m_directory;
    QString m_adminUrl;
    std::unique_ptr<StoreView> m_store;
    std::unique_ptr<ClientProcess> m_left;
    std::unique_ptr<ClientProcess> m_right;
    QByteArray m_why;
};

} // namespace orvo::test

#endif
