// ServerDialog.h: asks for a store on a PostgreSQL server, and tries it before it is opened.
#ifndef ORVO_APPS_CLIENT_START_SERVERDIALOG_H
#define ORVO_APPS_CLIENT_START_SERVERDIALOG_H

#include "apps/client/StoreThread.h"
#include "apps/client/start/PasswordFile.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace orvo::app {

class ServerDialog : public QDialog {
    Q_OBJECT
public:
    /// Where the password is kept; the data of an entry of the list.
    enum class Keep { Nowhere, SecretService, PasswordFile };

    explicit ServerDialog(const QString& user, QWidget* parent = nullptr);
    ~ServerDialog() override;

    /// The address without the password. Names of several hosts are parted by commas.
    QString address() const;
    /// What was typed; empty if it has been kept where libpq finds it.
    QString password() const { return m_password; }

    /// Keeps the password if that is wanted, then accepts; says what is wrong and stays otherwise.
    void accept() override;

private:
    void changed();
    void test();
    void tested(const store::Status& status, const QString& login, bool mayWrite);
    QString hosts(bool withPort) const;
    ServerLogin login() const;
    void say(const QString& text);
    bool keep(QString* error);

    QLineEdit *m_host, *m_database, *m_user, *m_typed; // these: children
    QSpinBox* m_port;
    QComboBox* m_keep;
    QLabel* m_result;
    QPushButton *m_test, *m_open;
    QString m_password;
    std::unique_ptr<StoreThread> m_thread; ///< of the last test; null before the first
};

} // namespace orvo::app

#endif
