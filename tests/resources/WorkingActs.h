// WorkingActs.h: what engineers do in the clients of WorkingClient.h besides their acts on menus
// and resources: questions, pickers and cells stand open for a random time, writes are refused,
// repeated and given up, and a client is left with an open edit.
#ifndef ORVO_TESTS_RESOURCES_WORKINGACTS_H
#define ORVO_TESTS_RESOURCES_WORKINGACTS_H

#include "tests/resources/OpenActs.h"
#include "tests/resources/RefusedActs.h"
#include "tests/resources/UnwrittenActs.h"

namespace orvo::test {

class WorkingActs {
public:
    using Client = TwoEditorsClient;

    explicit WorkingActs(WorkingScene scene) : m_scene(std::move(scene)) {}

    const std::map<QString, int>& figures() const { return m_scene.figures; }
    /// The first act that did what it must not.
    const QString& fault() const { return m_scene.fault; }

    /// Lets every text that is typed in that client be followed.
    void follow(Client& client) {
        client.typed = &m_scene.typed;
        client.each([&](auto& part) {
            part.dropped = [this](const QString& texts) { m_scene.typed.drop(texts); };
            part.typing = [this, &client](const QString& cell, const QString& word) {
                return m_scene.typed.typing(client.number(), cell, word, client.unwrittenTexts());
            };
        });
    }

    void ownAct(Client& client) {
        if (m_scene.chances.chance(50))
            actIn(client, client.part<MenuPart>());
        else
            actIn(client, client.part<ResPart>());
    }

    /// Ends what has the attention, but for some open edits.
    void settle(Client& client) {
        client.each([&](auto& part) {
            client.act(part, [&] {
                COrvoCliMod& module = part.module();
                if (boxStands(module))
                    m_open.answer(client, part, m_scene.chances.chance(50));
                if (auto* list = picker(module)) {
                    m_scene.chances.say("close the picker");
                    list->findChild<QPushButton*>("btnCancel")->click();
                }
                if (QLineEdit* line = openCell(module))
                    closeCell(line);
            });
            part.watch();
        });
        if (m_scene.chances.chance(30))
            m_list.work(client);
    }

    /// Leaves nothing open and nothing unwritten; `gaveUp` counts what could not be written.
    void finish(Client& client) {
        client.each([&](auto& part) {
            client.act(part, [&] {
                if (!part.isAtRest())
                    part.cancel();
            });
        });
        client::UnwrittenList& list = client.unwritten();
        list.repeatAll();
        while (!list.isEmpty()) {
            const QString before = client.unwrittenTexts();
            ++m_scene.figures["given up at the end"];
            list.giveUp(QString(list.entries().front().id));
            m_scene.dropVanished(client, before);
        }
    }

private:
    // -----------------------------------------------------------------------------------------
    // Acts

    template <class Part>
    void actIn(Client& client, Part& part) {
        const QString before = client.unwrittenTexts();
        bool list = false;
        bool leave = false;
        client.act(part, [&] {
            if (m_open.attend(client, part))
                return;
            const int what = m_scene.chances.below(100);
            if (what < 5)
                m_open.ask(part);
            else if (what < 12)
                m_open.open(part);
            else if (what < 30)
                m_open.openCellOf(part);
            else if (what < 38)
                m_refused.saveRefused(part);
            else if (what < 41)
                m_refused.saveDuplicate(part);
            else if (what < 49)
                list = true;
            else if (what < 51)
                leave = true;
            else if (what < 75 && !part.isAtRest())
                m_refused.saveAsItIs(part);
            else
                ordinary(client, part);
        });
        if (m_scene.chances.lastAct().contains("delete"))
            m_scene.dropVanished(client, before);
        if (list)
            m_list.work(client);
        if (leave)
            this->leave(client);
    }
    void ordinary(Client& client, MenuPart& part) {
        if (m_scene.chances.chance(3))
            m_scene.resources.removeResource(client.part<ResPart>(),
                                             m_scene.chances.oneOf(part.usedResources()));
        else
            m_scene.menus.ownAct(part);
    }
    void ordinary(Client&, ResPart& part) { m_scene.resources.ownAct(part); }

    // -----------------------------------------------------------------------------------------
    // Leaving

    /// Opens the editors anew, or ends the client and starts it again, with the answer of the
    /// engineer to what he has not saved.
    void leave(Client& client) {
        const int answer = m_scene.chances.below(3); // save, drop, stay
        bool stays = false;
        bool asked = false;
        client.each([&](auto& part) {
            COrvoCliMod& module = part.module();
            if (stays || module.ModEditText().isEmpty())
                return;
            asked = true;
            if (answer == 0) {
                const int failures = client.failures;
                client.act(part, [&] { stays = !module.ModEditSave(); });
                stays = stays || client.failures > failures;
            } else if (answer == 1) {
                m_scene.typed.drop(part.typedTexts());
            } else {
                stays = true;
            }
        });
        static const char* const answers[] = {"left, edit saved", "left, edit dropped", "stayed"};
        ++m_scene.figures[!asked ? "left without an edit" : stays ? "stayed" : answers[answer]];
        const bool restarts = m_scene.chances.chance(50);
        m_scene.chances.say(
            QString("leave: %1%2")
                .arg(stays ? "stay" : answers[answer], restarts ? ", process" : ""));
        if (stays)
            return;
        if (restarts)
            client.restart();
        else
            client.open();
        follow(client);
    }

    WorkingScene m_scene;
    OpenActs m_open{m_scene};
    RefusedActs m_refused{m_scene};
    UnwrittenActs m_list{m_scene};
};

} // namespace orvo::test

#endif
