#pragma once

#include "extension/ComposeSessionViewController.h"
#include "views/ViewFixture.h"

#include <memory>
#include <string>
#include <vector>

namespace quillmate
{

/// A window with a panel in it, a service behind it, and the pages that the panel opens.
class PanelFixture : public ViewFixture
{
public:
    PanelFixture();
    ~PanelFixture() override;

    /// As a view's, and the service knows who asks.
    void reset();
    /// Makes a panel and shows it in the window, in place of the one before.
    std::shared_ptr<ComposeSessionViewController> show();
    /// The same for a panel that is there already.
    void show(std::shared_ptr<ComposeSessionViewController> controller);
    /// Takes the panel out of the window and lets go of it.
    void close();
    using ViewFixture::click;
    void click(const char* objectName);

    /// Pages handed to the browser since the reset.
    std::vector<std::string>& opened() { return m_opened; }

private:
    std::vector<std::string> m_opened;
    std::shared_ptr<ComposeSessionViewController> m_controller;
};

} // namespace quillmate
