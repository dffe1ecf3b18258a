#pragma once

#include <QObject>

namespace quillmate
{

/// The desktop's light or dark appearance, followed as it changes: what the desktop portal's settings say, else whether
/// the application's palette is dark. QUILLMATE_APPEARANCE=light or =dark stands above both. Main thread only.
class NSAppearance : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)

public:
    /// Made on first use; goes with the application object.
    static NSAppearance& shared();

    [[nodiscard]] bool isDark() const { return m_dark; }
    /// Chooses the appearance, whatever the desktop and the environment say.
    void setDark(bool dark);

Q_SIGNALS:
    void darkChanged();

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    explicit NSAppearance(QObject* parent);
    void takePortalValue(const QVariant& value);
    void update();

    /// The portal's numbers: no preference, dark, light.
    enum class ColorScheme { NoPreference = 0, Dark = 1, Light = 2 };

    ColorScheme m_forced = ColorScheme::NoPreference;
    ColorScheme m_portal = ColorScheme::NoPreference;
    bool m_dark = false;
};

} // namespace quillmate
