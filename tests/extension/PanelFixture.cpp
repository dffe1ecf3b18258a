#include "extension/PanelFixture.h"

#include "features/CurrentMessage.h"
#include "platform/appkit/NSWorkspace.h"

#include <QTest>

namespace quillmate
{

PanelFixture::PanelFixture()
{
    NSWorkspace::shared().setOpener([this](const URL& url) {
        m_opened.push_back(url.absoluteString());
        return true;
    });
}

PanelFixture::~PanelFixture()
{
    close();
    NSWorkspace::shared().setOpener(nullptr);
}

void PanelFixture::reset()
{
    close();
    ViewFixture::reset();
    server().reply("GET /api/v1/me", R"({"email":"a@b.example","name":"A"})");
    m_opened.clear();
}

std::shared_ptr<ComposeSessionViewController> PanelFixture::show()
{
    show(ComposeSessionViewController::make(currentMessage()));
    return m_controller;
}

void PanelFixture::show(std::shared_ptr<ComposeSessionViewController> controller)
{
    close();
    m_controller = std::move(controller);
    ViewFixture::show(m_controller->view()->item());
}

void PanelFixture::close()
{
    ViewFixture::close();
    m_controller.reset();
}

void PanelFixture::click(const char* objectName)
{
    auto* target = item(objectName);
    QVERIFY2(target, objectName);
    ViewFixture::click(target);
}

} // namespace quillmate
