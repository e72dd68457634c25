// Demo.h: the demonstration installation: an invented gas pipeline with three compressor stations.
#ifndef ORVO_ADMIN_DEMO_DEMO_H
#define ORVO_ADMIN_DEMO_DEMO_H

#include "apps/admin/Folders.h"
#include "apps/admin/demo/Content.h"
#include "platform/store/Maintenance.h"

#include <cstdint>
#include <map>
#include <string>

namespace orvo::admin {

/// What the demonstration holds without growth.
inline constexpr int demoResources = 120;
inline constexpr int demoElements = 300;

/// Numbers of the next keys, by kind.
struct DemoNumbers {
    uint64_t resourceFolder = 0, resource = 0, desktop = 0, element = 0;
};

/// Fills a store that has its base folders. Throws Failure.
class DemoBuilder {
public:
    explicit DemoBuilder(store::Store& store);
    void build();
    /// The keys used so far: where growth goes on.
    const DemoNumbers& numbers() const { return m_numbers; }

private:
    struct Resource {
        std::string key, icon, sample;
        int kind;
    };
    void addUsers();
    void addExtensions();
    void addCatalogue();
    void addResources(const std::vector<Outline>& nodes, int kind, const std::string& folder,
                      const std::string& path);
    std::string addFolder(int kind, const std::string& parent, const std::string& caption);
    void addResource(const Outline& node, int kind, const std::string& folder,
                     const std::string& path);
    void addIcons();
    void addReports();
    void putContents();
    void addDesktops(const std::vector<Outline>& nodes, const std::string& parent);
    void addMenu(const Outline& desktop, const std::vector<Outline>& nodes,
                 const std::string& desktopKey, const std::string& parent);
    void sendAll();

    struct Content {
        int kind;
        std::string path, name, sample;
    };

    store::Store& m_store;
    DemoNumbers m_numbers;
    Batch m_users{table::Users}, m_extensions{table::MenuFileExt},
        m_folders{table::MenuResourceFolder}, m_resources{table::MenuResource},
        m_desktops{table::MenuFolder}, m_elements{table::Menu};
    std::map<std::string, std::string> m_userKeys;       ///< by login
    std::map<std::string, Resource> m_byName;            ///< resources that menus may start
    std::map<std::string, std::vector<Outline>> m_menus; ///< by sample name
    std::vector<Content> m_contents;               ///< forms and files whose bytes are to be put
    std::map<std::string, std::string> m_captions; ///< of forms
};

/// The stored files of a form of the demonstration: name and bytes.
std::vector<std::pair<std::string, std::string>>
demoFormFiles(const std::string& form, const std::string& caption, const std::string& sample);
/// A daily report for the day of that number, as text with separated values.
std::string demoReport(int day);

/// Adds so many resources and elements, evenly over new folders and desktops, and says how far that
/// has come. Throws Failure.
void growDemo(store::Store& store, const DemoNumbers& from, int64_t resources, int64_t elements,
              const store::Progress& progress);

} // namespace orvo::admin

#endif
