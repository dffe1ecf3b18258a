#include "localservice/Certificates.h"

#include <QFile>
#include <QFileInfo>
#include <QSslCertificate>
#include <QSslCertificateExtension>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTest>

using namespace quillmate::localservice;

class CertificatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRootStaysAndTheServerCertificateFollowsTheNames()
    {
        const QTemporaryDir folder;
        const ServerCertificate first = made(folder, {"a.example", "b.example"}, {"127.0.0.1"});
        const QSslCertificate server(first.certificate);
        const QSslCertificate root(first.authority);
        const auto names = server.subjectAlternativeNames();
        for (const QString& host :
             {QStringLiteral("a.example"), QStringLiteral("b.example"), QStringLiteral("localhost")}) {
            QVERIFY(names.contains(QSsl::DnsEntry, host));
        }
        QVERIFY(names.contains(QSsl::IpAddressEntry, QStringLiteral("127.0.0.1")));
        QVERIFY(QSslCertificate::verify({server}, QStringLiteral("a.example"))
                    .contains(QSslError(QSslError::UnableToGetLocalIssuerCertificate, server)));
        QVERIFY(!QSslKey(first.key, QSsl::Ec).isNull());
        QVERIFY(server.expiryDate() < root.expiryDate());

        const ServerCertificate same = made(folder, {"a.example", "b.example"}, {"127.0.0.1"});
        QCOMPARE(same.certificate, first.certificate);
        QCOMPARE(same.authority, first.authority);

        const ServerCertificate moved = made(folder, {"a.example", "b.example"}, {"192.0.2.7"});
        QVERIFY(moved.certificate != first.certificate);
        QCOMPARE(moved.authority, first.authority);
        QVERIFY(QSslCertificate(moved.certificate)
                    .subjectAlternativeNames()
                    .contains(QSsl::IpAddressEntry, QStringLiteral("192.0.2.7")));

        // The old root may not sign for a host that it was not made for.
        const ServerCertificate rebuilt = made(folder, {"c.example"}, {"127.0.0.1"});
        QVERIFY(rebuilt.authority != first.authority);
        QVERIFY(QSslCertificate(rebuilt.certificate)
                    .subjectAlternativeNames()
                    .contains(QSsl::DnsEntry, QStringLiteral("c.example")));
    }

    void damageIsMended_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("rootStays");
        for (const char* name : {"server.pem", "server-key.pem", "ca.pem", "ca-key.pem"}) {
            const bool server = QByteArray(name).startsWith("server");
            QTest::addRow("%s empty", name) << QString::fromUtf8(name) << QByteArray() << server;
            QTest::addRow("%s garbage", name)
                << QString::fromUtf8(name) << QByteArray("-----BEGIN CERTIFICATE-----\nAA") << server;
            QTest::addRow("%s missing", name) << QString::fromUtf8(name) << QByteArray("missing") << server;
            QTest::addRow("%s of another", name) << QString::fromUtf8(name) << QByteArray("another") << server;
            QTest::addRow("%s half written", name)
                << QString(QString::fromUtf8(name) + QStringLiteral(".new")) << QByteArray("half") << true;
        }
    }

    void damageIsMended()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(bool, rootStays);
        const QTemporaryDir folder;
        const ServerCertificate first = made(folder, {"a.example"}, {});
        QFile damaged(folder.filePath(file));
        if (content == "another") {
            const QTemporaryDir elsewhere;
            made(elsewhere, {"a.example"}, {});
            QVERIFY(damaged.remove() && QFile::copy(elsewhere.filePath(file), damaged.fileName()));
        } else if (content == "missing") {
            QVERIFY(damaged.remove());
        } else {
            QVERIFY(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                    damaged.write(content) == content.size());
            damaged.close();
        }
        const ServerCertificate next = made(folder, {"a.example"}, {});
        QCOMPARE(next.authority == first.authority, rootStays);
        const ServerCertificate after = made(folder, {"a.example"}, {});
        QCOMPARE(after.certificate, next.certificate);
        QCOMPARE(QFileInfo(folder.filePath(QStringLiteral("ca-key.pem"))).permissions() & 0x0077, 0);
        QCOMPARE(QFileInfo(folder.filePath(QStringLiteral("server-key.pem"))).permissions() & 0x0077, 0);
    }

    void aFolderThatCannotBeWrittenIsSaid()
    {
        const auto result = serverCertificate("/proc/quillmate", {"a.example"}, {});
        QVERIFY(std::get<std::string>(result).find("/proc/quillmate") != std::string::npos);
    }

private:
    static ServerCertificate made(const QTemporaryDir& folder, std::vector<std::string> hosts,
                                  std::vector<std::string> addresses)
    {
        auto result = serverCertificate(folder.path().toStdString(), std::move(hosts), std::move(addresses));
        return std::get<ServerCertificate>(std::move(result));
    }
};

QTEST_GUILESS_MAIN(CertificatesTest)
#include "CertificatesTest.moc"
