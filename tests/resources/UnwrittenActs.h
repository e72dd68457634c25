// UnwrittenActs.h: what engineers do with what could not be written: they repeat it, give it up, or
// write another text.
#ifndef ORVO_TESTS_RESOURCES_UNWRITTENACTS_H
#define ORVO_TESTS_RESOURCES_UNWRITTENACTS_H

#include "platform/store/Schema.h"
#include "tests/resources/WorkingScene.h"

namespace orvo::test {

class UnwrittenActs {
public:
    using Client = TwoEditorsClient;

    explicit UnwrittenActs(WorkingScene& scene) : m_scene(scene) {}

    void work(Client& client) {
        client::UnwrittenList& list = client.unwritten();
        if (list.isEmpty())
            return;
        const auto act = [&] {
            const client::UnwrittenEntry& entry =
                list.entries()[size_t(m_scene.chances.below(int(list.entries().size())))];
            const QString id = entry.id;
            const QString before = client.unwrittenTexts();
            const int what = m_scene.chances.below(10);
            const QString of = QString("%1 of %2 (%3)")
                                   .arg(list.entries().size())
                                   .arg(entry.words.what)
                                   .arg(entry.state);
            if (what < 5) {
                m_scene.chances.say("repeat one of " + of);
                ++m_scene.figures[list.repeat(id) ? "repeated" : "repeated in vain"];
            } else if (what < 6) {
                m_scene.chances.say("repeat all of " + of);
                list.repeatAll();
                ++m_scene.figures["repeated all"];
            } else if (what < 8) {
                m_scene.chances.say("give up one of " + of);
                list.giveUp(id);
                m_scene.dropVanished(client, before);
                ++m_scene.figures["given up"];
            } else if (entry.state == client::UnwrittenEntry::Conflict) {
                m_scene.chances.say("write another text in " + of);
                setMine(client, entry);
                ++m_scene.figures[list.repeat(id) ? "conflicts solved" : "conflicts left"];
            }
        };
        if (m_scene.chances.chance(50))
            client.act(client.part<MenuPart>(), act);
        else
            client.act(client.part<ResPart>(), act);
    }

private:
    void setMine(Client& client, const client::UnwrittenEntry& entry) {
        const client::RecordWrite record = client::recordsOf(entry.request).front();
        const store::TableDef* table = store::findTable(entry.request.table);
        const QString id = entry.id;
        for (const auto& [field, value] : record.values) {
            if (!std::holds_alternative<std::string>(value) ||
                table->fields[size_t(field)].name != std::string("caption"))
                continue;
            const QString before = client.unwrittenTexts();
            client.unwritten().setMine(
                id, record.key, field,
                m_scene.typed.typing(client.number(),
                                     QString::fromStdString(record.key) + "/caption", "Свой",
                                     before));
            m_scene.dropVanished(client, before);
        }
    }

    WorkingScene& m_scene;
};

} // namespace orvo::test

#endif
