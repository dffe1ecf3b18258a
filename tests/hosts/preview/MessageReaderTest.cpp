#include "hosts/preview/MessageReader.h"
#include "hosts/MadeUpExtension.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QThread>

#include <filesystem>
#include <future>

using namespace quillmate;

class MessageReaderTest : public QObject
{
    Q_OBJECT

private:
    const std::vector<std::string> m_samples = {QUILLMATE_SAMPLES "/mars.eml", QUILLMATE_SAMPLES "/plain.eml",
                                                QUILLMATE_SAMPLES "/newsletter.eml"};

private Q_SLOTS:
    void eachMessageIsDecidedOn()
    {
        MadeUpExtension extension;
        std::vector<std::string> asked;
        bool wrong = false; // Asked on the main thread, or shown more than the list knows.
        extension.color = [&](const MEMessage& message) {
            wrong = wrong || QThread::currentThread() == QCoreApplication::instance()->thread() || message.rawData ||
                    message.headers;
            asked.push_back(message.fromAddress.addressString.value_or("none"));
            return static_cast<int>(asked.size()) - 1; // None for the first.
        };
        MessageReader reader(extension, [](const std::string& problem) { qFatal("%s", problem.c_str()); });
        std::vector<int> colors;
        std::vector<std::string> senders;
        reader.list(m_samples, [&](const MessageReader::Listing& listing) {
            wrong = wrong || QThread::currentThread() != QCoreApplication::instance()->thread();
            for (const auto& listed : listing.value()) {
                colors.push_back(listed.color);
                senders.push_back(listed.entry.summary.sender.address);
            }
        });
        QTRY_COMPARE(colors.size(), std::size_t{3});
        QCOMPARE(colors, (std::vector{0, 1, 2}));
        QCOMPARE(senders, asked);
        QCOMPARE(asked,
                 (std::vector<std::string>{"owen.pritchard@hilltop-observers.example",
                                           "helen.marsh@riverside-print.example", "news@saltmarsh-bakery.example"}));
        QVERIFY(!wrong);
    }

    void endsInTheMiddle()
    {
        MadeUpExtension extension;
        std::promise<void> asked;
        std::promise<void> free;
        int count = 0;
        extension.color = [&, released = free.get_future().share()](const MEMessage&) {
            if (++count == 1) {
                asked.set_value();
            }
            released.wait();
            return 0;
        };
        bool told = false;
        std::future<void> end;
        {
            MessageReader reader(extension, [](const std::string&) {});
            reader.list(m_samples, [&told](const auto&) { told = true; });
            asked.get_future().wait();
            // The end waits for the question that is being answered; the rest is not asked.
            end = std::async(std::launch::async, [&free] { free.set_value(); });
        }
        end.wait();
        QCoreApplication::processEvents();
        QVERIFY(!told);
    }

    void rulesThatCannotBeUsedAreTold()
    {
        MadeUpExtension extension;
        extension.rules = "[{]";
        std::promise<std::string> told;
        MessageReader reader(extension, [&told](const std::string& sentence) { told.set_value(sentence); });
        QVERIFY(!told.get_future().get().empty());
        // The messages are read all the same.
        bool loaded = false;
        reader.load({m_samples[1], 0, std::filesystem::file_size(m_samples[1]), false, nullptr},
                    [&loaded](const auto& result) { loaded = result->hasValue(); });
        QTRY_VERIFY(loaded);
    }
};

QUILLMATE_TEST(MessageReaderTest, QCoreApplication)
#include "MessageReaderTest.moc"
