#pragma once

#include "support/TestServer.h"

#include <QFile>
#include <QSslConfiguration>
#include <QTcpServer>

#include <memory>
#include <vector>

class QTcpSocket;

namespace quillmate
{

/// The part of a TestServer that lives on its thread.
class TestServerThread : public QTcpServer
{
    Q_OBJECT

public:
    TestServerThread(TestServer& owner, TestServer::Security security);
    Q_INVOKABLE void dropConnections();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void received(QTcpSocket* socket);
    void send(QTcpSocket* socket, const TestReply& reply);

    TestServer& m_owner;
    QSslConfiguration m_configuration;
    std::vector<std::unique_ptr<QFile>> m_kept;
};

} // namespace quillmate
