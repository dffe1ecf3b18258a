#include "hosts/preview/mail/MessageStore.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

using namespace quillmate;

constexpr std::size_t mailBytes = std::size_t{64} * 1024 * 1024;
constexpr std::size_t serviceBytes = std::size_t{2} * 1024 * 1024;

/// What stands before the piece, and the piece again and again.
struct Enemy {
    const char* name;
    std::string head;
    std::string piece;
};

/// The piece again and again, as much of it as is read of one part.
std::string much(const std::string& piece)
{
    std::string text;
    while (text.size() < serviceBytes) {
        text += piece;
    }
    return text + "\n";
}

std::string nestedMultiparts()
{
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        const std::string boundary = "b" + std::to_string(i);
        text += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
    }
    return text;
}

const std::string mixed = "Content-Type: multipart/mixed; boundary=b\n\n";
const std::string alternative =
    "Content-Type: multipart/alternative; boundary=b\n\n--b\nContent-Type: text/html\n\n<b>\n";

const std::vector<Enemy> enemies = {
    {"plain text", "\n", "Nothing but a text that goes on and on, line after line.\n"},
    {"one long line", "\n", "word "},
    {"line ends", "\n", "\r\n"},
    {"an attachment",
     "Content-Type: multipart/mixed; boundary=b\n\n--b\n\nText\n--b\nContent-Type: image/png\n"
     "Content-Transfer-Encoding: base64\n\n",
     "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA\n"},
    {"empty parts", mixed, "--b\n"},
    {"parts of text", mixed, "--b\n\ntext\n"},
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
    {"nested multiparts 1000 deep", "", nestedMultiparts()},
    {"header lines without a field", "", "a\n"},
    {"words of changing charsets", "Subject: ", "=?utf-7?b?YQ==?= =?koi8-r?b?YQ==?= "},
    {"words in many fields", "", "a: =?utf-7?b?YQ==?=\n"},
    {"quotation marks in From", "From: ", "\""},
    {"comments in From", "From: ", "("},
    {"blank lines as base64", "Content-Transfer-Encoding: base64\n\n", "\n"},
    {"blank lines as uuencode", "Content-Transfer-Encoding: x-uuencode\n\n", "\n"},
    {"blank lines as quoted-printable", "Content-Transfer-Encoding: quoted-printable\n\n", "\n"},
    {"parts of uuencoded blank lines", mixed, "--b\nContent-Transfer-Encoding: x-uuencode\n\n" + much("\n")},
    {"alternatives of uuencoded blank lines", alternative,
     "--b\nContent-Transfer-Encoding: x-uuencode\n\n" + much("\n")},
    {"zeros", "\n", std::string(1, '\0')},
    {"UTF-7", "Content-Type: text/plain; charset=utf-7\n\n", "+AAA"},
    {"parts of UTF-7 zeros", mixed, "--b\nContent-Type: text/plain; charset=utf-7\n\n" + much("+AAA-")},
    {"parts of UTF-16 zeros", mixed, "--b\nContent-Type: text/plain; charset=utf-16\n\n" + much(std::string(2, '\0'))},
    {"parts of broken UTF-8", mixed, "--b\nContent-Type: text/plain; charset=utf-8\n\n" + much("\x81")},
    {"parts of broken GB18030", mixed, "--b\nContent-Type: text/plain; charset=gb18030\n\n" + much("\xFF")},
    {"parts of flowed blanks", mixed, "--b\nContent-Type: text/plain; format=flowed\n\n" + much(" \n")},
    {"quoted lines", "\n", "> > > said\n"},
    {"From lines", "\n", ">From \n"},
    {"combining marks, right to left", "Content-Type: text/plain; charset=utf-8\n\ne", "\u202E\u0301"},
    {"flowed", "Content-Type: text/plain; format=flowed; delsp=yes\n\n", "a \n"},
    {"HTML elements that end out of order", "Content-Type: text/html\n\n", "<b><i></b>"},
    {"HTML elements that do not end", "Content-Type: text/html\n\n", "<b><i><u>"},
    {"HTML end tags", "Content-Type: text/html\n\n", "</b>"},
    {"HTML rows and cells", "Content-Type: text/html\n\n", "<tr><td><b>"},
    {"HTML signs", "Content-Type: text/html\n\n", "<"},
    {"HTML ampersands", "Content-Type: text/html\n\n", "&"},
    {"HTML sections of characters", "Content-Type: text/html\n\n", "<![CDATA["},
    {"HTML comments that do not end", "Content-Type: text/html\n\n", "<!--"},
    {"hidden HTML", "Content-Type: text/html\n\n<div hidden>", "<b></i>"},
    {"parts of hidden HTML", mixed, "--b\nContent-Type: text/html\n\n<div hidden>" + much("<a></i></a>")},
    {"parts of hidden HTML as plain text", mixed, "--b\n\n<html><div hidden>" + much("<a></i></a>")},
    {"forwarded hidden HTML as plain text", "Content-Type: multipart/digest; boundary=b\n\n",
     "--b\n\n\n<html><div hidden>" + much("<a></i></a>")},
};

std::string mailOf(const Enemy& enemy)
{
    std::string source = "MIME-Version: 1.0\n" + enemy.head; // The service takes it for a whole source then.
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

/// The seconds of processor time that this process has used, whatever else the machine is doing.
double secondsUsed()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Reads it as the preview does and as the service does, in a process of its own, whose memory is only this.
void measure(const Enemy& enemy)
{
    const pid_t child = ::fork();
    if (child != 0) {
        int status = 0;
        ::waitpid(child, &status, 0);
        if (status != 0) {
            std::printf("mail %-38s ended its reader\n", enemy.name);
        }
        return;
    }
    const auto source = std::make_shared<const std::string>(mailOf(enemy));
    const std::string_view text = *source;
    const auto seconds = [](auto work) {
        const double start = secondsUsed();
        work();
        return secondsUsed() - start;
    };
    const std::size_t empty = std::min(text.find("\n\n"), text.size());
    const double whole = seconds([text] { textOfBody(text, serviceBytes); });
    const double body = seconds([text, empty] { textOfBody(text.substr(empty), serviceBytes); });
    const double row = seconds([text] { summarizeMessage(text.substr(0, std::size_t{128} * 1024)); });
    const double preview = seconds([&source] { (void)loadMessage({"mail", 0, source->size(), true, source}); });
    std::printf(
        "%s %-38s service %5.2f s whole, %5.2f s body; preview %5.2f s row, %5.2f s shown; %4.1f bytes a byte\n",
        std::max({whole, body, row + preview}) > 3 ? "OVER" : "mail", enemy.name, whole, body, row, preview,
        peakBytes() / static_cast<double>(mailBytes));
    std::fflush(stdout);
    ::_exit(0);
}

} // namespace

/// A mail of 64 MiB of each kind that is hard to read: at most 3 s of processor time each way, and 8 bytes of memory
/// for each of its own.
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
