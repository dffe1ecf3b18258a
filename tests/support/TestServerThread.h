#pragma once

#include "support/TestServer.h"

#include <QSslConfiguration>
#include <QTcpServer>

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
    static void send(QTcpSocket* socket, const TestReply& reply);

    TestServer& m_owner;
    QSslConfiguration m_configuration;
};

} // namespace quillmate
