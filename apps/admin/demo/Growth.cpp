// Growth of the demonstration: everything is computed from a running number, so that memory holds
// no more than one batch, and every run gives the same store.
#include "apps/admin/demo/Demo.h"

#include "apps/admin/Failure.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace orvo::admin {

namespace {

constexpr int batchSize = 20000;
constexpr int folderGroup = 20; ///< folders in a folder, desktops in a folder
constexpr int resourcesInFolder = 200;
constexpr int filesInFolder = 50; ///< the store looks a file up among those of its folder
constexpr int elementsOnDesktop = 200;
constexpr int elementsInMenuFolder = 24;

/// Share of each kind among the new resources, in percent; index 0 is modules.
constexpr std::array<int, 4> shares = {30, 30, 25, 15};
constexpr std::array<const char*, 4> namePatterns = {"mod_%07lld", "fn_%07lld", "sh_%07lld.ui",
                                                     "pasport_%07lld.txt"};

/// Number of the part, of `parts` even ones, that an item of `items` falls into.
int64_t partOf(int64_t item, int64_t items, int64_t parts) {
    return item * parts / items;
}
/// First item of that part.
int64_t partBegin(int64_t part, int64_t items, int64_t parts) {
    return (part * items + parts - 1) / parts;
}

int64_t divideUp(int64_t a, int64_t b) {
    return (a + b - 1) / b;
}

std::string number(int64_t value, int width) {
    std::string digits = std::to_string(value);
    if (static_cast<int>(digits.size()) < width)
        digits.insert(0, static_cast<size_t>(width) - digits.size(), '0');
    return digits;
}

class Growth {
public:
    Growth(store::Store& store, const DemoNumbers& from, int64_t resources, int64_t elements,
           const store::Progress& progress)
        : m_store(store)
        , m_progress(progress)
        , m_all(static_cast<uint64_t>(resources + elements))
        , m_folders(store)
        , m_numbers(from)
        , m_elementCount(elements) {
        int64_t left = resources;
        for (size_t i = 0; i < m_kinds.size(); ++i) {
            m_kinds[i].count =
                i + 1 == m_kinds.size() ? left : std::min(left, resources * shares[i] / 100);
            left -= m_kinds[i].count;
        }
        for (const Outline& section : demoOutline("places.txt")) {
            if (section.column(0) == "places")
                for (const Outline& place : section.children)
                    m_places.push_back(place.column(0));
            else
                m_kinds.at(static_cast<size_t>(std::stoi(section.column(0)) - 1)).subjects =
                    section.children;
        }
    }

    void run() {
        uint64_t first = m_numbers.resource;
        for (size_t i = 0; i < m_kinds.size(); ++i) {
            m_kinds[i].first = first;
            growKind(static_cast<int>(i) + 1);
            first += static_cast<uint64_t>(m_kinds[i].count);
        }
        growDesktops();
    }

private:
    struct KindGrowth {
        int64_t count = 0;
        uint64_t first = 0; ///< number of the key before its first
        std::vector<Outline> subjects;
    };

    const std::string& place(int64_t at) const {
        return m_places[static_cast<size_t>(at) % m_places.size()];
    }
    const Outline& subject(int kind, int64_t item) const {
        const auto& subjects = m_kinds[static_cast<size_t>(kind - 1)].subjects;
        return subjects[static_cast<size_t>(item) % subjects.size()];
    }
    std::string captionOf(int kind, int64_t item) const {
        return subject(kind, item).column(0) + " " + place(item / 7) + "-" + number(item + 1, 1);
    }
    std::string resourceKey(int kind, int64_t item) const {
        return demoKey(DemoKey::Resource, m_kinds[static_cast<size_t>(kind - 1)].first +
                                              static_cast<uint64_t>(item) + 1);
    }
    static std::string nameOf(int kind, int64_t item) {
        char name[40];
        std::snprintf(name, sizeof name, namePatterns[static_cast<size_t>(kind - 1)],
                      static_cast<long long>(item + 1));
        return name;
    }
    void sendIfFull(Batch& batch) {
        if (batch.count() >= batchSize)
            send(batch);
    }
    void send(Batch& batch) {
        m_done += static_cast<uint64_t>(batch.count());
        batch.send(m_store, "рост образцовой установки не записан");
        m_progress(m_done, m_all);
    }

    std::string groupCaption(int64_t group) const {
        return "Участок " + number(group + 1, 2) + " " + place(group);
    }
    std::string nodeCaption(int64_t folder) const {
        return "Узел " + number(folder + 1, 3) + " " + place(folder * 5 + 3);
    }

    void growKind(int kind) {
        const KindGrowth& growth = m_kinds[static_cast<size_t>(kind - 1)];
        if (growth.count == 0)
            return;
        const int64_t parts =
            divideUp(growth.count, kind == File ? filesInFolder : resourcesInFolder);
        const std::vector<std::string> keys = growFolders(kind, parts);
        Batch batch(table::MenuResource);
        for (int64_t item = 0; item < growth.count; ++item) {
            const int64_t part = partOf(item, growth.count, parts);
            batch.insert(resourceKey(kind, item)).text(field::name_, nameOf(kind, item));
            batch.text(field::MenuResourceFolderKey, keys[static_cast<size_t>(part)]);
            batch.integer(field::type_, kind).text(field::caption, captionOf(kind, item));
            batch.text(field::ico, subject(kind, item).column(1));
            sendIfFull(batch);
        }
        send(batch);
        if (kind == File)
            putFiles(growth, parts);
    }

    /// The new folders of a kind, in groups; their keys by number.
    std::vector<std::string> growFolders(int kind, int64_t parts) {
        const std::string top = m_folders.need(kind, {});
        Batch batch(table::MenuResourceFolder);
        std::vector<std::string> keys;
        std::string group;
        const auto add = [&](const std::string& parent, const std::string& caption) {
            const std::string key = demoKey(DemoKey::ResourceFolder, ++m_numbers.resourceFolder);
            batch.insert(key).text(field::ParentKey, parent).integer(field::type_, kind);
            batch.text(field::caption, caption);
            return key;
        };
        for (int64_t part = 0; part < parts; ++part) {
            if (part % folderGroup == 0)
                group = add(top, groupCaption(part / folderGroup));
            keys.push_back(add(group, nodeCaption(part)));
        }
        send(batch);
        return keys;
    }

    void putFiles(const KindGrowth& growth, int64_t parts) {
        std::vector<std::string> texts;
        std::vector<store::FileToPut> files;
        texts.reserve(batchSize); // the puts look into them
        const auto flush = [&] {
            require(m_store.filePut(files), "файлы роста не записаны");
            files.clear();
            texts.clear();
        };
        for (int64_t item = 0; item < growth.count; ++item) {
            const int64_t part = partOf(item, growth.count, parts);
            texts.push_back(captionOf(File, item) + "\nПоверен, годен.\n");
            files.push_back({groupCaption(part / folderGroup) + "/" + nodeCaption(part),
                             nameOf(File, item), texts.back(), demoTime});
            if (files.size() == batchSize)
                flush();
        }
        if (!files.empty())
            flush();
    }

    void growDesktops() {
        if (m_elementCount == 0)
            return;
        const int64_t desktops = divideUp(m_elementCount, elementsOnDesktop);
        Batch rows(table::MenuFolder);
        std::vector<std::string> keys;
        std::string group;
        const auto add = [&](const std::string& parent, const std::string& caption, bool isFolder) {
            const std::string key = demoKey(DemoKey::Desktop, ++m_numbers.desktop);
            rows.insert(key).text(field::ParentKey, parent).text(field::caption, caption);
            rows.text(field::order_, isFolder ? sortclass::folder : sortclass::desktop)
                .flag(field::isFolder, isFolder);
            return key;
        };
        std::string region;
        for (int64_t desktop = 0; desktop < desktops; ++desktop) {
            if (desktop % (folderGroup * folderGroup) == 0)
                region =
                    add({}, "Округ " + number(desktop / (folderGroup * folderGroup) + 1, 2), true);
            if (desktop % folderGroup == 0)
                group = add(region, groupCaption(desktop / folderGroup), true);
            keys.push_back(
                add(group, "АРМ " + number(desktop + 1, 3) + " " + place(desktop * 3), false));
        }
        send(rows);

        Batch batch(table::Menu);
        for (int64_t desktop = 0; desktop < desktops; ++desktop) {
            const int64_t begin = partBegin(desktop, m_elementCount, desktops);
            const int64_t end = partBegin(desktop + 1, m_elementCount, desktops);
            growMenu(batch, keys[static_cast<size_t>(desktop)], begin, end);
        }
        send(batch);
    }

    void growMenu(Batch& batch, const std::string& desktop, int64_t begin, int64_t end) {
        std::string folder;
        for (int64_t item = begin; item < end; ++item) {
            const int64_t place = (item - begin) % (elementsInMenuFolder + 1);
            const int64_t block = (item - begin) / (elementsInMenuFolder + 1);
            const std::string key =
                demoKey(DemoKey::Element, m_numbers.element + static_cast<uint64_t>(item) + 1);
            batch.insert(key).text(field::FolderKey, desktop).flag(field::oneCopy, item % 9 == 0);
            batch.flag(field::separator, item % 8 == 5);
            // A folder, and what stands in it; a folder that would stay empty is an element.
            if (place == 0 && item + 1 < end) {
                folder = key;
                batch.integer(field::order_, static_cast<int>(block) * 1000);
                batch.text(field::caption, nodeCaption(item)).text(field::ico, "map.png");
            } else {
                const bool top = place == 0;
                batch.text(field::parent, top ? std::string() : folder);
                batch.integer(field::order_, static_cast<int>(top ? block : place - 1) * 1000);
                setTarget(batch, item);
            }
            sendIfFull(batch);
        }
    }

    /// Caption, resource, icon and parameters of an element that starts something.
    void setTarget(Batch& batch, int64_t item) {
        int64_t target = 0;
        int64_t startable = 0;
        for (int kind = Module; kind <= Form; ++kind)
            startable += m_kinds[static_cast<size_t>(kind - 1)].count;
        if (startable > 0)
            target = static_cast<int64_t>(mixed(static_cast<uint64_t>(item)) %
                                          static_cast<uint64_t>(startable));
        int kind = Module;
        while (kind < Form && target >= m_kinds[static_cast<size_t>(kind - 1)].count)
            target -= m_kinds[static_cast<size_t>(kind++ - 1)].count;
        // With no new resources to start, the first module of the demonstration.
        const std::string key =
            startable > 0 ? resourceKey(kind, target) : demoKey(DemoKey::Resource, 1);
        batch.text(field::caption, captionOf(kind, target)).text(field::MenuResourceKey, key);
        batch.text(field::ico, subject(kind, target).column(1));
        batch.text(field::params, "Узел=" + std::to_string(target % 1000));
    }

    store::Store& m_store;
    const store::Progress& m_progress;
    const uint64_t m_all; ///< records to write, the few folders and desktops aside
    uint64_t m_done = 0;
    const Folders m_folders;
    DemoNumbers m_numbers;
    const int64_t m_elementCount;
    std::array<KindGrowth, 4> m_kinds;
    std::vector<std::string> m_places;
};

} // namespace

void growDemo(store::Store& store, const DemoNumbers& from, int64_t resources, int64_t elements,
              const store::Progress& progress) {
    Growth(store, from, resources, elements, progress).run();
}

} // namespace orvo::admin
