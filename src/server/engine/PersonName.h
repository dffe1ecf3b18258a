#pragma once

#include <QString>

#include <optional>

namespace quillmate::server
{

/// A person's name as they signed it, an all-caps one in ordinary letters.
struct PersonName {
    QString title;  ///< "Dr.", "Prof. Dr.", "Mme"; often empty
    QString given;  ///< the first word; empty for a Japanese family name that stands alone
    QString family; ///< with its particles ("van der Berg"); empty when only one name is there

    /// All of it but the title, in the order in which it is written.
    [[nodiscard]] QString whole() const;
};

/// What speaks for a line being a name: `Signed`, it stands below a closing formula; `Alone`, nothing but its place at
/// the end, so that only what can hardly be anything else is taken.
enum class NameEvidence { Signed, Alone };

/// The name on a line of a signature, without what follows it there (", Sales", " | ACME", "(she/her)", "PhD") and what
/// stands before it ("i. A.", "Ihre"). Nothing for a company's, a team's or a role's line, a greeting, an address.
std::optional<PersonName> readName(const QString& line, NameEvidence evidence);

} // namespace quillmate::server
