#include "hosts/preview/mail/MailDocument.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

using namespace quillmate;

constexpr std::size_t mailBytes = std::size_t{64} * 1024 * 1024;

/// What stands before the piece, and the piece again and again.
struct Enemy {
    const char* name;
    std::string head;
    std::string piece;
};

const std::vector<Enemy> enemies = {
    {"plain text", "\n", "Nothing but a text that goes on and on, line after line.\n"},
    {"one long line", "\n", "word "},
    {"line ends", "\n", "\r\n"},
    {"an attachment",
     "Content-Type: multipart/mixed; boundary=b\n\n--b\n\nText\n--b\nContent-Type: image/png\n"
     "Content-Transfer-Encoding: base64\n\n",
     "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA\n"},
    {"empty parts", "Content-Type: multipart/mixed; boundary=b\n\n", "--b\n"},
    {"parts of text", "Content-Type: multipart/mixed; boundary=b\n\n", "--b\n\ntext\n"},
    {"nearly boundaries", "Content-Type: multipart/mixed; boundary=b\n\n--b\n\n", "--c\n"},
    {"nested multiparts", "", "Content-Type: multipart/mixed; boundary=b\n\n--b\n"},
    {"messages in messages", "", "Content-Type: message/rfc822\n\n"},
    {"short fields", "", "a:\n"},
    {"one field", "Subject: ", "a"},
    {"folded field", "Subject: a", "\n a"},
    {"groups in groups", "From: ", "a:"},
    {"addresses", "From: ", "a@b.example, "},
    {"parameters", "Content-Type: text/plain", "; a*0=b"},
    {"encoded words", "Subject: ", "=?utf-8?Q?a?= =?latin1?Q?b?= "},
    {"half encoded words", "Subject: ", "=?utf-8?Q?a"},
    {"base64 of nothing", "Content-Transfer-Encoding: base64\n\n", "=\n"},
    {"quoted-printable of nothing", "Content-Transfer-Encoding: quoted-printable\n\n", "=\n"},
    {"uuencode", "Content-Transfer-Encoding: x-uuencode\n\n", "begin 644 a\n"},
    {"HTML elements", "Content-Type: text/html\n\n", "<b></i>"},
    {"HTML blocks", "Content-Type: text/html\n\n", "<li><div>"},
    {"HTML tables", "Content-Type: text/html\n\n", "<table><tr><td>a"},
    {"HTML images", "Content-Type: text/html\n\n", "<img src='http://a'>"},
    {"HTML attributes", "Content-Type: text/html\n\n<img ", "a='b'"},
    {"HTML styles", "Content-Type: text/html\n\n<p style='", "background:url(http://a);"},
    {"HTML references", "Content-Type: text/html\n\n", "&amp;"},
    {"body of nearly boundaries", "\r\n", "--b\n\n"},
};

std::string mailOf(const Enemy& enemy)
{
    std::string source = enemy.head;
    source.reserve(mailBytes + 64);
    while (source.size() < mailBytes) {
        source += enemy.piece;
    }
    return source;
}

/// The most memory that this process has held, in bytes.
double peakBytes()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    double kibibytes = 0;
    status >> kibibytes;
    return kibibytes * 1024;
}

/// Reads it as the preview does and as the service does, in a process of its own, whose memory is only this.
void measure(const Enemy& enemy)
{
    const pid_t child = ::fork();
    if (child != 0) {
        int status = 0;
        ::waitpid(child, &status, 0);
        if (status != 0) {
            std::printf("mail %-28s ended its reader\n", enemy.name);
        }
        return;
    }
    std::string source = mailOf(enemy);
    const auto seconds = [](auto work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double service = seconds([&source] { textOfBody(source, std::size_t{2} * 1024 * 1024); });
    const double preview = seconds([&source] { readDocument(std::move(source)); });
    std::printf("mail %-28s preview %5.2f s, service %5.2f s, %4.1f bytes of memory a byte\n", enemy.name, preview,
                service, peakBytes() / static_cast<double>(mailBytes));
    std::fflush(stdout);
    ::_exit(0);
}

} // namespace

/// A mail of 64 MiB of each kind that is hard to read: at most 3 s, and 8 bytes of memory for each of its own.
int main(int count, char** arguments)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    for (const Enemy& enemy : enemies) {
        if (count < 2 || std::string(arguments[1]) == enemy.name) {
            measure(enemy);
        }
    }
    return EXIT_SUCCESS;
}
