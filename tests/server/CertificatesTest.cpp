#include "server/http/Certificates.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>

using namespace quillmate::server;
using namespace Qt::StringLiterals;

class CertificatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRootStaysAndTheServerCertificateFollowsTheNames()
    {
        const QTemporaryDir folder;
        const ServerCertificate first = made(folder, {"a.example", "b.example"}, {"127.0.0.1"});
        const QByteArray firstRoot = contentOf(folder, "ca.pem");
        const QSslCertificate server(first.certificate);
        const auto names = server.subjectAlternativeNames();
        for (const char* host : {"a.example", "b.example", "localhost"}) {
            QVERIFY(names.contains(QSsl::DnsEntry, QString::fromUtf8(host)));
        }
        QVERIFY(names.contains(QSsl::IpAddressEntry, u"127.0.0.1"_s));
        QCOMPARE(names.size(), 5); // and ::1, but nothing else
        QVERIFY(!QSslKey(first.key, QSsl::Ec).isNull());
        QVERIFY(server.expiryDate() < QSslCertificate(firstRoot).expiryDate());
        QCOMPARE(made(folder, {"a.example", "b.example"}, {"127.0.0.1"}).certificate, first.certificate);

        const ServerCertificate moved = made(folder, {"a.example", "b.example"}, {"192.0.2.7"});
        QCOMPARE(contentOf(folder, "ca.pem"), firstRoot);
        const auto movedNames = QSslCertificate(moved.certificate).subjectAlternativeNames();
        QVERIFY(movedNames.contains(QSsl::IpAddressEntry, u"192.0.2.7"_s));

        // The old root may not sign for a host that it was not made for.
        const ServerCertificate rebuilt = made(folder, {"c.example"}, {"127.0.0.1"});
        QVERIFY(contentOf(folder, "ca.pem") != firstRoot);
        const auto rebuiltNames = QSslCertificate(rebuilt.certificate).subjectAlternativeNames();
        QVERIFY(rebuiltNames.contains(QSsl::DnsEntry, u"c.example"_s));
    }

    void damageIsMended()
    {
        const QTemporaryDir elsewhere;
        made(elsewhere, {"a.example"}, {});
        for (const char* name : {"server.pem", "server-key.pem", "ca.pem", "ca-key.pem", "server.pem.new"}) {
            for (const QByteArray& content :
                 {QByteArray("-----BEGIN CERTIFICATE-----\nAA"), QByteArray("missing"), contentOf(elsewhere, name)}) {
                const QTemporaryDir folder;
                made(folder, {"a.example"}, {});
                const QByteArray root = contentOf(folder, "ca.pem");
                QFile damaged(folder.filePath(QString::fromUtf8(name)));
                QVERIFY(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate));
                QVERIFY(damaged.write(content) == content.size());
                damaged.close();
                QVERIFY(content != "missing" || damaged.remove());
                const ServerCertificate next = made(folder, {"a.example"}, {});
                QVERIFY2((contentOf(folder, "ca.pem") == root) == (*name == 's'), name);
                QCOMPARE(made(folder, {"a.example"}, {}).certificate, next.certificate);
                for (const char* key : {"ca-key.pem", "server-key.pem"}) {
                    QCOMPARE(QFileInfo(folder.filePath(QString::fromUtf8(key))).permissions() & 0x0077, 0);
                }
            }
        }
    }

    void aFolderThatCannotBeWrittenIsSaid()
    {
        const auto result = serverCertificate("/proc/quillmate", {"a.example"}, {});
        QVERIFY(!result && result.error().find("/proc/quillmate") != std::string::npos);
    }

private:
    static QByteArray contentOf(const QTemporaryDir& folder, const char* name)
    {
        QFile file(folder.filePath(QString::fromUtf8(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static ServerCertificate made(const QTemporaryDir& folder, std::vector<std::string> hosts,
                                  std::vector<std::string> addresses)
    {
        auto result = serverCertificate(folder.path().toStdString(), std::move(hosts), std::move(addresses));
        return std::move(result).value();
    }
};

QUILLMATE_TEST(CertificatesTest, QCoreApplication)
#include "CertificatesTest.moc"
