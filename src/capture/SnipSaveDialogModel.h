#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <utility>

namespace tavrine {

/// The question where a capture goes. Main thread; lives as long as its dialog. It is answered once: what comes after,
/// while the dialog fades, is nothing.
class SnipSaveDialogModel : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void(bool useAsDefault)> onSaveHere;
        std::function<void(bool useAsDefault)> onChooseFolder;
        std::function<void()> onCancel;
    };

    SnipSaveDialogModel(QString defaultDirectory, Actions actions)
        : m_defaultDirectory(std::move(defaultDirectory)), m_actions(std::move(actions)) {}

    [[nodiscard]] const QString &defaultDirectory() const { return m_defaultDirectory; }
    [[nodiscard]] bool useAsDefault() const { return m_useAsDefault; }
    void setUseAsDefault(bool useAsDefault) { m_useAsDefault = useAsDefault; }

    void saveHere() {
        answer([this] { m_actions.onSaveHere(m_useAsDefault); });
    }
    void chooseFolder() {
        answer([this] { m_actions.onChooseFolder(m_useAsDefault); });
    }
    void cancel() {
        answer([this] { m_actions.onCancel(); });
    }

private:
    template <class Answer>
    void answer(Answer give) {
        if (!std::exchange(m_isAnswered, true))
            give();
    }

    QString m_defaultDirectory;
    Actions m_actions;
    bool m_useAsDefault = true;
    bool m_isAnswered = false;
};

} // namespace tavrine
