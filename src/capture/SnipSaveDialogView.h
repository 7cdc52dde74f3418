#pragma once

#include "look/PanelSurface.h"

#include <memory>

namespace tavrine {

class SnipSaveDialogModel;

/// Asks where a capture goes. Return saves it there, Escape cancels. Main thread; owned by its window.
class SnipSaveDialogView final : public look::PanelSurface {
    Q_OBJECT
public:
    explicit SnipSaveDialogView(std::shared_ptr<SnipSaveDialogModel> model);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    std::shared_ptr<SnipSaveDialogModel> m_model;
};

} // namespace tavrine
