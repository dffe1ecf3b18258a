#pragma once

#include "platform/appkit/NSViewController.h"

#include <functional>
#include <memory>

#include <QObject>
#include <QUrl>
#include <QVariantMap>

namespace quillmate
{

/// A declarative view to be hosted: which QML type, its properties, the state it shows, and what happens when it is
/// shown and hidden.
struct HostedView {
    /// Address of the QML file whose root is an Item.
    QUrl source;
    /// Initial values of its properties, required ones included.
    QVariantMap properties;
    /// What the properties point at; kept as long as the view.
    std::shared_ptr<void> state;
    /// Runs each time the view comes into a window, and each time it leaves one.
    std::function<void()> onAppear;
    std::function<void()> onDisappear;
};

/// Shows a declarative view. A view that cannot be made is a fault of the program: it is said in one diagnostic line
/// and an empty view stands in its place. Main thread only.
class NSHostingController : public NSViewController
{
public:
    explicit NSHostingController(HostedView rootView);
    ~NSHostingController() override;

protected:
    std::shared_ptr<NSView> loadView() override;

private:
    void windowChanged(bool shown);

    HostedView m_rootView;
    bool m_appeared = false;
    std::unique_ptr<QObject> m_context; // Ends the connections when this object goes.
    std::shared_ptr<NSView> m_hostedView;
};

} // namespace quillmate
