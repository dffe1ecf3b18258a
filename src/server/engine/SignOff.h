#pragma once

#include <QString>

#include <optional>

namespace quillmate::server
{

/// Whether a line of a letter closes it ("Best regards,", "Viele Grüße", "Bien cordialement", "Un saludo,", "Thanks for
/// your help,"), in a dozen languages' commonest words. What comes back is the name on the same line ("LG Jonas",
/// "Best, Tom"), often empty; nothing for another line.
std::optional<QString> signOff(const QString& line);

} // namespace quillmate::server
