// WritingPlan.h: what a writer does, step by step, decided by a seed alone. Whoever makes the same
// steps knows what the store must hold after each of them, without asking the writer.
#ifndef ORVO_TESTS_TRIALS_WRITINGPLAN_H
#define ORVO_TESTS_TRIALS_WRITINGPLAN_H

#include "platform/store/Store.h"

#include <QProcess>
#include <QString>

#include <map>
#include <random>
#include <string>
#include <vector>

class COrvoCliSes;

namespace orvo::test {

class WritingPlan {
public:
    /// Elements of that desktop, and files at the top of the file area.
    WritingPlan(unsigned seed, std::string desktop);

    /// Goes on by one step.
    void advance();
    int steps() const { return m_steps; }
    /// Writes the last step: all of it or nothing. False if it was not saved.
    bool write(COrvoCliSes& session) const;
    /// In words, what the store does not hold of what all steps so far leave there, or holds
    /// besides; empty if it is just that.
    QString difference(store::Store& store) const;

private:
    struct Element {
        std::string caption;
        int order = 0;
    };
    static QByteArray content(int version);
    QString filesDifference(store::Store& store) const;
    unsigned below(unsigned most) { return unsigned(m_random() % most); }

    std::mt19937 m_random;
    std::string m_desktop;
    int m_steps = 0, m_made = 0;
    std::map<std::string, Element> m_elements;
    std::map<std::string, int> m_files; ///< versions by name
    struct Act {
        uint32_t flag;
        std::string key;
        Element element;
    };
    std::vector<Act> m_acts; ///< of the last step; one of the two is empty
    std::vector<std::string> m_puts;
};

/// A process with the host library that makes the steps of a plan, one process after the other,
/// until it fails or is killed.
class PlannedWriter {
public:
    PlannedWriter(std::string url, unsigned seed, const QString& desktop);
    ~PlannedWriter();

    bool start();
    /// Lets it work for that long at most. True if it had to be killed, false if it had failed.
    bool killAfter(int milliseconds);
    /// What it said of its failure.
    QString words() const { return m_words; }
    /// Steps that it has said to be saved, or that were found saved.
    int steps() const { return m_certain.steps(); }
    /// How many were found saved without its having said so.
    int unsaid() const { return m_unsaid; }
    /// As WritingPlan::difference. The last step may be there without its having been said.
    QString difference(store::Store& store);

private:
    const std::string m_url, m_desktop;
    const unsigned m_seed;
    WritingPlan m_certain;
    QProcess m_process;
    QString m_words;
    int m_unsaid = 0;
};

/// Whether these arguments are those of such a process; then what main returns.
bool isPlannedWriter(int argc, char** argv, int* result);

} // namespace orvo::test

#endif
