#pragma once

#include <optional>

#include <QObject>

namespace quillmate
{

/// How large the desktop wants its text, followed as it changes: the greater of what the desktop portal's text scaling
/// and the application's font say, the latter against 10 points at 96 dots per inch. QUILLMATE_TEXT_SCALE=1.5 stands
/// above both. Main thread only.
class NSFont : public QObject
{
    Q_OBJECT

public:
    /// Made on first use; goes with the application object.
    static NSFont& shared();

    /// 1 for the sizes that the views were drawn for; from 1 to 2, the most that a panel of 400 points has room for.
    [[nodiscard]] double textScale() const { return m_textScale; }
    /// Chooses the scale, whatever the desktop and the environment say; above 0.
    void setTextScale(double scale);

Q_SIGNALS:
    void textScaleChanged();

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    explicit NSFont(QObject* parent);
    void update();

    std::optional<double> m_forced;
    double m_portal = 1;
    double m_textScale = 1;
};

} // namespace quillmate
