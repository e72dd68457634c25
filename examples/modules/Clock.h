// Clock.h: the smallest module: it has parameters and a timer, and reads nothing.
#ifndef SAMPLE_CLOCK_H
#define SAMPLE_CLOCK_H

#include <frame/OrvoClient.h>

#include <QTimer>

class QLabel;

class Clock : public COrvoCliMod {
    Q_OBJECT
public:
    explicit Clock(COrvoCliApp* app);
    /// "Период": seconds between two looks at the time, 1 to 3600. Called before ModuleStart.
    void SetParamMod(QString name, QString value) override;
    bool ModuleStart() override;

private:
    void show();

    QLabel* m_time; // child
    QTimer m_timer;
    int m_seconds = 1;
};

#endif
