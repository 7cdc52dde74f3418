#pragma once

#include "ManagerTest.h"
#include "adapters/fake/FakeAlerts.h"
#include "base/VirtualKeys.h"
#include "clipboard/ClipboardSearchModel.h"

#include <map>

#include <gmock/gmock.h>

namespace tavrine {

using testing::ElementsAre;
using testing::IsEmpty;
using Category = ClipboardSearchCategory;

class ClipboardSearchModelTest : public ManagerTest {
protected:
    /// A history of each kind, the newest first: text, link, image, pinned, saved, both.
    void startWithEachKind() {
        save(str("plain text"), 1s);
        save(str("https://example.com"), 2s);
        save(str("Copied Image"), 3s, str("a.png"));
        savePinned(str("pinned text"), 4s);
        saveInMySaved(str("saved text"), 5s);
        ClipboardItem both = saveInMySaved(str("both text"), 6s);
        both.isPinned = true;
        database.save(both);
        startPanel();
    }
    void startPanel() {
        start();
        model = std::make_unique<ClipboardSearchModel>(
            ClipboardSearchModel::Ports{*manager, alerts, center, time, searchPatience});
        model->setOnPaste([this](const ClipboardItem &item) { pasted.append(item.content); });
        model->setOnDismiss([this] { ++dismissals; });
        QObject::connect(model.get(), &ClipboardSearchModel::searchFieldFocusWanted, [this] { ++focusWishes; });
    }

    /// As long as a search takes; a test of slow ones has none.
    std::chrono::milliseconds searchPatience = 1min;

    void openPanel() { center.post(str("clipboardSearchPanelOpened")); }
    bool press(int keyCode, bool isCommandHeld = false) {
        return model->handleKeyDown(str("Clipboard Search"), keyCode, isCommandHeld);
    }
    void select(const QString &content) {
        while (selected() != content && press(virtualKey::up) && selected() != visible().first()) {
        }
        while (selected() != content && selected() != visible().last())
            press(virtualKey::down);
        ASSERT_EQ(selected(), content);
    }

    [[nodiscard]] QStringList visible() const { return contents(model->visibleItems()); }
    [[nodiscard]] QString selected() const {
        for (const ClipboardItem &item : model->visibleItems()) {
            if (item.id == model->selectedID())
                return item.content;
        }
        return model->selectedID() ? str("(not visible)") : str("(none)");
    }
    [[nodiscard]] QUuid idOf(const QString &content) {
        for (const ClipboardItem &item : rows()) {
            if (item.content == content)
                return item.id;
        }
        return {};
    }
    [[nodiscard]] std::optional<ClipboardItem> stored(const QString &content) {
        for (const ClipboardItem &item : rows()) {
            if (item.content == content)
                return item;
        }
        return std::nullopt;
    }
    [[nodiscard]] std::vector<std::pair<QString, QStringList>> sections() const {
        std::vector<std::pair<QString, QStringList>> result;
        for (const auto &section : model->sections())
            result.emplace_back(section.header, visible().mid(static_cast<qsizetype>(section.first),
                                                              static_cast<qsizetype>(section.count)));
        return result;
    }
    static std::pair<QString, QStringList> under(const char *header, const QStringList &items) {
        return {str(header), items};
    }

    FakeAlerts alerts;
    std::unique_ptr<ClipboardSearchModel> model;
    QStringList pasted;
    int dismissals = 0;
    int focusWishes = 0;
};

} // namespace tavrine
