#pragma once

#include <QIcon>
#include <QWidget>

namespace tavrine {

/// The program's icon with rounded corners; a hammer on a gradient where there is none. Main thread.
class AppIconView final : public QWidget {
    Q_OBJECT

public:
    AppIconView(int side, qreal cornerRadius, QWidget *parent = nullptr);

Q_SIGNALS:
    void tapped();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    qreal m_cornerRadius;
    QIcon m_icon;
};

} // namespace tavrine
