"""A message of 25 MB, most of it an attachment."""


def write_large_message(file):
    attachment = b"QUFB" * 19 + b"\n"
    file.write(
        b"From: Hal Young <hal@a.example>\nSubject: A long one\nMessage-ID: <long@a.example>\nMIME-Version: 1.0\n"
        b"Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: text/plain\n\n"
        b"The hall is booked for Friday, 5 June. Please bring the chairs.\n--b\n"
        b"Content-Type: application/octet-stream\nContent-Disposition: attachment\n"
        b"Content-Transfer-Encoding: base64\n\n"
    )
    file.write(attachment * (25_000_000 // len(attachment)))
    file.write(b"--b--\n")
    file.flush()
