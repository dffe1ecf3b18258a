#include "extension/PanelFixture.h"

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
    close();
    m_controller = ComposeSessionViewController::make();
    ViewFixture::show(m_controller->view()->item());
    return m_controller;
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
