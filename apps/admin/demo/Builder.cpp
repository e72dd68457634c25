#include "apps/admin/demo/Demo.h"

#include "apps/admin/Failure.h"
#include "frame/Kinds.h"

#include <QDir>

#include <algorithm>

namespace orvo::admin {

namespace {

/// Far from the numbers of the folders that exist.
constexpr uint64_t missingFolder = 0xffffffff;

void textUnlessEmpty(Batch& batch, const char* field, const std::string& text) {
    if (!text.empty())
        batch.text(field, text);
}

std::string joined(const std::string& path, const std::string& name) {
    return path.empty() ? name : path + "/" + name;
}

} // namespace

DemoBuilder::DemoBuilder(store::Store& store) : m_store(store) {}

void DemoBuilder::build() {
    addUsers();
    addExtensions();
    addCatalogue();
    for (const Outline& sample : demoOutline("menus.txt"))
        m_menus[sample.column(0)] = sample.children;
    addDesktops(demoOutline("desktops.txt"), {});
    sendAll();
    putContents();
}

void DemoBuilder::sendAll() {
    // A link's target before what links to it.
    for (Batch* batch :
         {&m_users, &m_extensions, &m_folders, &m_resources, &m_desktops, &m_elements})
        batch->send(m_store, "образцовая установка не записана");
}

void DemoBuilder::addUsers() {
    const Table present(m_store, table::Users);
    uint64_t number = 0;
    for (const Outline& user : demoOutline("people.txt")) {
        ++number;
        const std::string& login = user.column(0);
        if (const Row row = present.find(
                [&](const Row& other) { return sameText(other.text(field::login_), login); })) {
            m_userKeys[login] = row.key();
            continue;
        }
        const std::string key = m_userKeys[login] = demoKey(DemoKey::User, number);
        m_users.insert(key)
            .text(field::login_, login)
            .flag(field::program, user.column(4) == "program");
        textUnlessEmpty(m_users, field::lastName, user.column(1));
        textUnlessEmpty(m_users, field::firstName, user.column(2));
        textUnlessEmpty(m_users, field::midlName, user.column(3));
    }
}

void DemoBuilder::addExtensions() {
    const Table present(m_store, table::MenuFileExt);
    uint64_t number = 0;
    for (const Outline& line : demoOutline("extensions.txt")) {
        ++number;
        const std::string& extension = line.column(0);
        if (!present.find(
                [&](const Row& row) { return sameText(row.text(field::fileExt), extension); }))
            m_extensions.insert(demoKey(DemoKey::Extension, number))
                .text(field::fileExt, extension);
    }
}

void DemoBuilder::addCatalogue() {
    const Folders folders(m_store);
    int kind = Module;
    for (const Outline& top : demoOutline("catalogue.txt")) {
        addResources(top.children, kind, folders.need(kind, {}), {});
        ++kind;
    }
    addIcons();
    addReports();
}

std::string DemoBuilder::addFolder(int kind, const std::string& parent,
                                   const std::string& caption) {
    const std::string key = demoKey(DemoKey::ResourceFolder, ++m_numbers.resourceFolder);
    m_folders.insert(key)
        .text(field::ParentKey, parent)
        .integer(field::type_, kind)
        .text(field::caption, caption);
    return key;
}

void DemoBuilder::addResources(const std::vector<Outline>& nodes, int kind,
                               const std::string& folder, const std::string& path) {
    for (const Outline& node : nodes) {
        const std::string& caption = node.column(0);
        if (node.mark == Outline::Folder)
            addResources(node.children, kind, addFolder(kind, folder, caption),
                         joined(path, caption));
        else if (node.mark == Outline::Missing)
            addResources(node.children, kind, demoKey(DemoKey::ResourceFolder, missingFolder), {});
        else
            addResource(node, kind, folder, path);
    }
}

void DemoBuilder::addResource(const Outline& node, int kind, const std::string& folder,
                              const std::string& path) {
    const std::string& name = node.column(0);
    const std::string key = demoKey(DemoKey::Resource, ++m_numbers.resource);
    m_resources.insert(key).text(field::MenuResourceFolderKey, folder).text(field::name_, name);
    m_resources.integer(field::type_, kind).text(field::caption, node.column(1));
    textUnlessEmpty(m_resources, field::ico, node.column(2));
    textUnlessEmpty(m_resources, field::params, node.column(3));
    if (!node.column(5).empty()) {
        m_resources.text(field::UsersKey, m_userKeys.at(node.column(5)));
        m_resources.date(field::dateTimeEdit,
                         demoTime + 977.0 * static_cast<double>(m_numbers.resource));
    }
    if (kind != File)
        m_byName[name] = {key, node.column(2), node.column(4), kind};
    m_captions[name] = node.column(1);
    if (hasContents(kind))
        m_contents.push_back({kind, path, name, node.column(4)});
}

void DemoBuilder::addIcons() {
    const std::string folder = Folders(m_store).need(File, iconFolder);
    for (const QString& name :
         QDir(QStringLiteral(":/demo/icons")).entryList(QDir::Files, QDir::Name)) {
        Outline node;
        node.columns = {name.toStdString(), "Значок " + name.section('.', 0, 0).toStdString()};
        addResource(node, File, folder, iconFolder);
    }
}

void DemoBuilder::addReports() {
    // Daily reports make up the promised number, however many icons there are.
    const std::string folder = addFolder(File, {}, "Сводки");
    const std::string year = addFolder(File, folder, "2024");
    for (int day = 1; m_numbers.resource < demoResources; ++day) {
        const std::string digits = (day < 10 ? "0" : "") + std::to_string(day);
        Outline node;
        node.columns = {"svodka_2024-03-" + digits + ".csv", "Сводка за " + digits + ".03.2024"};
        addResource(node, File, year, "Сводки/2024");
    }
}

void DemoBuilder::putContents() {
    std::vector<std::string> bytes; // behind the views of the puts
    bytes.reserve(m_contents.size());
    std::vector<store::FileToPut> files;
    int day = 0;
    for (const Content& content : m_contents) {
        if (content.kind == Form) {
            const auto stored =
                demoFormFiles(content.name, m_captions[content.name], content.sample);
            std::vector<store::FileToPut> puts;
            for (const auto& [name, text] : stored)
                puts.push_back({{}, name, text, demoTime});
            require(m_store.formPut(content.path, puts),
                    "форма «" + content.name + "» не записана");
            continue;
        }
        if (content.path == iconFolder)
            bytes.push_back(demoFile("icons/" + content.name));
        else if (content.path.rfind("Сводки", 0) == 0)
            bytes.push_back(demoReport(++day));
        else
            bytes.push_back(demoFile("files/" + content.name));
        files.push_back({content.path, content.name, bytes.back(), demoTime});
    }
    require(m_store.filePut(files), "файлы образцовой установки не записаны");
}

void DemoBuilder::addDesktops(const std::vector<Outline>& nodes, const std::string& parent) {
    for (const Outline& node : nodes) {
        const bool isFolder = node.mark == Outline::Folder;
        const std::string key = demoKey(DemoKey::Desktop, ++m_numbers.desktop);
        m_desktops.insert(key).text(field::caption, node.column(0)).flag(field::isFolder, isFolder);
        m_desktops.text(field::ParentKey, parent)
            .text(field::order_, isFolder ? sortclass::folder : sortclass::desktop);
        if (isFolder)
            addDesktops(node.children, key);
        else
            addMenu(node, m_menus.at(node.column(1)), key, {});
    }
}

void DemoBuilder::addMenu(const Outline& desktop, const std::vector<Outline>& nodes,
                          const std::string& desktopKey, const std::string& parent) {
    const auto filled = [&](size_t column, const Outline& node) {
        return replaced(replaced(node.column(column), "{N}", desktop.column(2)), "{S}",
                        desktop.column(3));
    };
    int order = 0;
    for (const Outline& node : nodes) {
        const std::string key = demoKey(DemoKey::Element, ++m_numbers.element);
        m_elements.insert(key).text(field::parent, parent).text(field::FolderKey, desktopKey);
        m_elements.text(field::caption, filled(0, node)).integer(field::order_, order);
        order += 1000;
        const std::string& marks = node.column(4);
        m_elements.flag(field::separator, marks.find("sep") != marks.npos);
        m_elements.flag(field::oneCopy, marks.find("one") != marks.npos);
        std::string icon = node.column(2);
        if (const std::string name = filled(1, node); !name.empty()) {
            const auto resource = m_byName.find(name);
            if (resource == m_byName.end())
                throw Failure("меню называет ресурс «" + name + "», которого нет");
            m_elements.text(field::MenuResourceKey, resource->second.key);
            if (icon.empty())
                icon = resource->second.icon;
        }
        textUnlessEmpty(m_elements, field::ico, icon);
        textUnlessEmpty(m_elements, field::params, filled(3, node));
        addMenu(desktop, node.children, desktopKey, key);
    }
}

} // namespace orvo::admin
