// Catalogue.h: a catalogue of any size, and the keys of what is in it.
#ifndef ORVO_BENCH_RESOURCES_CATALOGUE_H
#define ORVO_BENCH_RESOURCES_CATALOGUE_H

#include "tests/menu/ModuleFixture.h"

#include <QByteArray>

#include <random>

namespace orvo::bench {

/// 30 % modules, 30 % functions, 25 % forms and 15 % files, numbered through; 200 of a kind in a
/// folder, 20 such folders in another one. Every form and file has its content. Beside them a
/// folder "large" with a tenth as many modules once more, and one "empty".
class Catalogue {
public:
    explicit Catalogue(int rows) : m_rows(rows) {}

    void fill(test::TestStore& store) const;

    int rows() const { return m_rows; }
    int inLarge() const { return m_rows / 10; }
    static QByteArray key(int number) { return "res-" + QByteArray::number(number); }
    /// The key of any resource of that kind.
    QByteArray any(int kind) { return key(from(kind) + below(from(kind + 1) - from(kind))); }
    /// The key of any resource.
    QByteArray any() { return key(below(m_rows)); }
    /// The key of any folder that holds resources of the kind.
    QByteArray anyFolder(int kind) { return folder(kind, below(folders(kind))); }
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    static constexpr int inFolder = 200;

private:
    /// The number of the first resource of the kind.
    int from(int kind) const;
    int folders(int kind) const { return (from(kind + 1) - from(kind) + inFolder - 1) / inFolder; }
    static QByteArray folder(int kind, int number) {
        return "folder-" + QByteArray::number(kind) + "-" + QByteArray::number(number);
    }

    const int m_rows;
    std::mt19937 m_random{7};
};

} // namespace orvo::bench

#endif
