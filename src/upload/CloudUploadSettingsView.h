#pragma once

#include "look/Draft.h"
#include "upload/CloudUploadSettingsModel.h"

#include <QWidget>

namespace tavrine {

namespace look {
class Button;
class ScrollPane;
class Spinner;
class Toggle;
class WrappedText;
} // namespace look
class ScriptEditorView;
class TestLogView;

/// The page of the settings on which the upload script is edited, saved and tried out. Made when it is opened; its
/// draft goes with it, and whoever closes it asks first. Main thread.
class CloudUploadSettingsView final : public QWidget, public look::Draft {
    Q_OBJECT

public:
    CloudUploadSettingsView(CloudUploadSettingsModel::Ports ports, CloudUploadSettingsModel::Texts texts,
                            QWidget *parent = nullptr);
    ~CloudUploadSettingsView() override;

    [[nodiscard]] QSize sizeHint() const override { return {660, 600}; }
    [[nodiscard]] bool isUnsaved() const override { return m_model.isUnsaved(); }
    [[nodiscard]] Question question() const override;
    [[nodiscard]] bool saveDraft() override { return m_model.save(); }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QWidget *makeHeader();
    [[nodiscard]] QWidget *makeEditing();
    [[nodiscard]] QWidget *makeResult();
    void refresh();
    void refreshResult();

    Time &m_time;
    CloudUploadSettingsModel m_model;
    look::ScrollPane *m_pane = nullptr;
    look::Toggle *m_toggle = nullptr;
    QWidget *m_editing = nullptr;
    QWidget *m_locked = nullptr;
    ScriptEditorView *m_editor = nullptr;
    QWidget *m_editorFrame = nullptr;
    look::WrappedText *m_error = nullptr;
    look::Button *m_save = nullptr;
    look::Button *m_test = nullptr;
    look::Spinner *m_spinner = nullptr;
    QWidget *m_result = nullptr;
    TestLogView *m_log = nullptr;
    QWidget *m_logFrame = nullptr;
    look::WrappedText *m_outcome = nullptr;
};

} // namespace tavrine
