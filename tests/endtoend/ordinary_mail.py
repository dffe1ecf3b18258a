"""Messages as they arrive on an ordinary day."""

import base64
import quopri
from dataclasses import dataclass

# A few words of every text, which a person looks for in its summary.
ENGLISH = "The delivery of the spring catalogue is on Friday, 14 March."
GERMAN = "Die Lieferung der Grüße für Köln kommt am Freitag, 14. März."
PGP = "-----BEGIN PGP MESSAGE-----\n\nhQEMA5Ix8xTq3k4hAQf/QmVpc3BpZWw=\n=aBcD\n-----END PGP MESSAGE-----\n"
ENVELOPE = base64.encodebytes(bytes(range(1, 250))).decode()


@dataclass
class Mail:
    name: str  # a part of its subject
    source: bytes
    text: str | None = ENGLISH  # a part of its text; None when there is nothing to read
    of_parts: bool = False  # handed over as it is, so that the service reads it


def single(name, text, charset="utf-8", encoding="8bit", subtype="plain", words=None, more=""):
    """A message of one part; `text` in that charset, its first line as the words to look for."""
    content = text.encode(charset) if isinstance(text, str) else text
    encoded = {"base64": base64.encodebytes, "quoted-printable": quopri.encodestring}.get(encoding, bytes)(content)
    head = f"Content-Type: text/{subtype}; charset={charset}{more}\nContent-Transfer-Encoding: {encoding}\n"
    return Mail(name, message(name, head, encoded), text.splitlines()[0] if words is None else words)


def message(name, head, body):
    fields = f"From: Helen Marsh <helen@press.example>\nTo: maria@mail.example\nSubject: About {name}\n"
    fields += f"Date: Tue, 04 Mar 2025 09:15:42 +0100\nMessage-ID: <{name.replace(' ', '.')}@press.example>\nMIME-Version: 1.0\n"
    return (fields + head + "\n").encode() + (body if isinstance(body, bytes) else body.encode())


def multipart(name, kind, *parts, text=ENGLISH, more=""):
    """Each part: its header fields and its body."""
    pieces = [f"--=_b\n{head}\n{body}\n" for head, body in parts]
    head = f'Content-Type: multipart/{kind}; boundary="=_b"\n' + more
    return Mail(name, message(name, head, "".join(pieces) + "--=_b--\n"), text, of_parts=True)


def opaque(name, head, body=ENVELOPE):
    return Mail(name, message(name, head + "\n", body), None)


def part(kind, text, encoding="quoted-printable", charset="utf-8", more=""):
    encoder = {"base64": base64.encodebytes, "quoted-printable": quopri.encodestring}.get(encoding, bytes)
    body = encoder(text.encode(charset)).decode("latin-1")
    return f"Content-Type: {kind}; charset={charset}{more}\nContent-Transfer-Encoding: {encoding}\n", body


def page(text, before="", after=""):
    return f"<html><head><style>p {{ color: red }}</style></head><body>{before}<p>{text}</p>{after}</body></html>\n"


NEWSLETTER = page(
    ENGLISH,
    '<div style="display:none;max-height:0">Open this in your browser</div><img src="https://press.example/open.gif" width="1" height="1">'
    '<table width="600"><tr><td><img src="https://press.example/logo.png" alt="Riverside"></td></tr></table>',
    '<table><tr><td><a href="https://press.example/leave">Unsubscribe</a></td></tr></table>',
)
INVITATION = (
    "BEGIN:VCALENDAR\nMETHOD:REQUEST\nVERSION:2.0\nPRODID:-//press//EN\nBEGIN:VEVENT\nUID:1@press.example\n"
    "DTSTAMP:20250304T080000Z\nDTSTART:20250314T090000Z\nDTEND:20250314T100000Z\nSUMMARY:Delivery\n"
    "ORGANIZER:mailto:helen@press.example\nEND:VEVENT\nEND:VCALENDAR\n"
)
JAPANESE = "春のカタログの納品は三月十四日です。\nご確認をお願いします。\n"
CHINESE = "春季目录将于三月十四日星期五交货。\n请确认。\n"
RUSSIAN = "Доставка весеннего каталога будет в пятницу, 14 марта.\n"
ARABIC = "سيتم تسليم كتالوج الربيع يوم الجمعة 14 مارس.\n"
HEBREW = "קטלוג האביב יימסר ביום שישי, 14 במרץ.\n"

MAIL = [
    single("seven bits", ENGLISH + "\n", "us-ascii", "7bit"),
    single("quoted-printable", GERMAN + "\n", "utf-8", "quoted-printable"),
    single("quoted-printable of Latin letters", GERMAN + "\n", "iso-8859-1", "quoted-printable"),
    single("base64", GERMAN + "\n", "utf-8", "base64"),
    single("eight bits of Latin letters", GERMAN + "\n", "iso-8859-1"),
    single("the euro", "Die Lieferung kostet 300 € für Köln.\n", "iso-8859-15"),
    single("curly quotes", "The “spring” catalogue – ours – costs 300 €.\n", "windows-1252", "quoted-printable"),
    single("ISO-2022-JP", JAPANESE, "iso-2022-jp", "7bit", words="三月十四日"),
    single("GB18030", CHINESE, "gb18030", "base64", words="三月十四日"),
    single("KOI8-R", RUSSIAN, "koi8-r"),
    single("UTF-8", GERMAN + "\n"),
    single("flowed text", "The delivery of the spring \ncatalogue is on Friday, 14 March.\n", more="; format=flowed", words="14 March"),
    single("a page", page(GERMAN), "utf-8", "quoted-printable", "html", "14. März"),
    single("a page in base64", page(GERMAN), "iso-8859-1", "base64", "html", "14. März"),
    single("newsletter", NEWSLETTER, "utf-8", "quoted-printable", "html", "14 March"),
    multipart("two ways", "alternative", part("text/plain", GERMAN), part("text/html", page(GERMAN)), text="14. März"),
    multipart(
        "a list", "mixed", part("text/plain", GERMAN, "base64"),
        ("Content-Type: text/plain\n", "____\nmembers mailing list\nhttps://lists.example/members\n"), text="Grüße für Köln",
        more="List-Id: <members.lists.example>\nList-Unsubscribe: <mailto:leave@lists.example>\nPrecedence: list\n",
    ),
    multipart("an invitation", "alternative", part("text/plain", ENGLISH), part("text/calendar", INVITATION, more="; method=REQUEST")),
    multipart(
        "PGP signed", 'signed; micalg=pgp-sha256; protocol="application/pgp-signature"', part("text/plain", ENGLISH),
        ("Content-Type: application/pgp-signature\n", "-----BEGIN PGP SIGNATURE-----\n\niQEz\n-----END PGP SIGNATURE-----\n"),
    ),
    multipart(
        "S-MIME signed", 'signed; micalg=sha-256; protocol="application/pkcs7-signature"', part("text/plain", ENGLISH),
        ("Content-Type: application/pkcs7-signature; name=smime.p7s\nContent-Transfer-Encoding: base64\n", ENVELOPE),
    ),
    multipart(
        "attachments", "mixed", part("text/plain", GERMAN, "quoted-printable", "iso-8859-1"),
        ("Content-Type: application/pdf; name=list.pdf\nContent-Disposition: attachment\nContent-Transfer-Encoding: base64\n", ENVELOPE),
        text="14. März",
    ),
    multipart("forwarded", "mixed", part("text/plain", ENGLISH), ("Content-Type: message/rfc822\n", "From: a@b.example\nSubject: old\n\nAn older text.\n")),
    single("Arabic", ARABIC, "utf-8", "base64", words="14 مارس"),
    single("Hebrew", HEBREW, "iso-8859-8", "quoted-printable", words="14 במרץ"),
    Mail("no identifier", message("no identifier", "", ENGLISH + "\n").replace(b"Message-ID:", b"X-Was:")),
    multipart(
        "newsletter of two", "alternative", part("text/plain", ENGLISH + "\n\nUnsubscribe: https://press.example/leave"),
        part("text/html", NEWSLETTER, "base64"),
    ),
    Mail("no charset named", message("no charset named", "", (GERMAN + "\n").encode()), GERMAN),
    single("long lines", ENGLISH + " " + "It is the usual one. " * 60 + "\n", "utf-8", "quoted-printable", words="14 March"),
    opaque("S-MIME opaque", 'Content-Type: application/pkcs7-mime; smime-type=signed-data; name="smime.p7m"\nContent-Transfer-Encoding: base64'),
    opaque("S-MIME encrypted", "Content-Type: application/pkcs7-mime; smime-type=enveloped-data\nContent-Transfer-Encoding: base64"),
    opaque("PGP inline", "Content-Type: text/plain; charset=utf-8", PGP),
    opaque(
        "PGP encrypted", 'Content-Type: multipart/encrypted; protocol="application/pgp-encrypted"; boundary=b',
        "--b\nContent-Type: application/pgp-encrypted\n\nVersion: 1\n--b\nContent-Type: application/octet-stream\n\n" + PGP + "--b--\n",
    ),
    Mail("nothing", message("nothing", "", ""), None),
]
