#pragma once

#include "base/NotificationCenter.h"
#include "look/Draft.h"
#include "shell/settings/SidebarItem.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class SidebarView;

/// The settings: the side bar, and the page that is selected in it. It holds no setting itself. Belongs to the window;
/// main thread.
///
/// A page with something unsaved goes when the person was asked whether to save it, and stays when it shall be saved
/// and cannot. The window is moved by its ground, beside everything that can be pressed. Only the page that is shown
/// exists. "navigateToClipboardSettings" and "navigateToLofiSettings" lead to their pages for as long as the view
/// lives.
class MainAppView final : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize smallestSize{720, 520};
    static constexpr QSize firstSize{900, 600};
    static constexpr auto windowTitle = "Tavrine";

    using MakePage = std::function<std::unique_ptr<QWidget>(SidebarItem)>;

    /// True to save what is unsaved. The main loop may run meanwhile.
    using AskToSave = std::function<bool(const look::Draft::Question &)>;

    /// A new view shows the first page.
    MainAppView(NotificationCenter &center, MakePage makePage, AskToSave askToSave, QWidget *parent = nullptr);
    ~MainAppView() override;

    /// The window round a view, in the middle of its screen and not shown yet.
    [[nodiscard]] static std::unique_ptr<QWidget> makeWindow(NotificationCenter &center, MakePage makePage,
                                                             AskToSave askToSave);

    [[nodiscard]] std::optional<SidebarItem> selection() const { return m_selection; }
    /// None shows what to do instead of a page.
    void setSelection(std::optional<SidebarItem> item);
    [[nodiscard]] QWidget *page() const { return m_page; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void addKeys();
    [[nodiscard]] bool settleDrafts();
    void place();

    MakePage m_makePage;
    AskToSave m_askToSave;
    bool m_isAsking = false;
    SidebarView *m_sidebar;
    QWidget *m_page = nullptr;
    std::optional<SidebarItem> m_selection;
    NotificationCenter::Token m_toClipboard;
    NotificationCenter::Token m_toLofi;
};

} // namespace tavrine
