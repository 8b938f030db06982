#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// One book of the catalogue: twelve texts at fixed positions, as the service sent them (UTF-8).
///
/// A record of any other length is malformed and reads as twelve empty texts, so a reader never
/// needs to check before it reads. A plain value: copied and moved freely, no locking.
class [[gnu::visibility("default")]] BookDescription {
public:
    /// Positions of the fields, in the alphabetical order of the service's element names.
    enum Field : std::size_t {
        Artist,         ///< author
        CategoryId,     ///< category identifier
        CoverArtImage,  ///< address of the cover image
        Duration,       ///< duration of an audio item
        FileType,       ///< file type
        ISBN,           ///< ISBN
        ISBN13,         ///< ISBN-13
        ItemID,         ///< the service's item identifier, the key of every other operation
        TavroID,        ///< the service's own identifier of the item
        NumberOfFiles,  ///< number of files of the item
        Status,         ///< item status
        Title,          ///< title
        FieldCount      ///< how many fields a well-formed record has
    };

    /// Makes a malformed record: no fields, every field reads as empty.
    BookDescription() = default;

    /// Makes a record of copies; it is malformed (no fields) unless there are exactly `FieldCount`.
    ///
    /// @param fields the texts, in the order of `Field`.
    explicit BookDescription(const std::vector<std::string>& fields);

    /// Replaces the fields if exactly `FieldCount` are given.
    ///
    /// @param fields the texts, in the order of `Field`; they are copied.
    /// @return true, or false with the record as it was for any other number of fields.
    bool setData(const std::vector<std::string>& fields);

    /// Reads one field. The reference lives as long as the record is unchanged.
    ///
    /// @param index position of the field, a `Field`.
    /// @return the field; `emptyString` in a malformed record or for an index past the last field.
    const std::string& field(std::size_t index) const;

    /// The fields: exactly `FieldCount` of them in a well-formed record.
    std::vector<std::string> data;

    /// What every field of a malformed record reads as. Always empty.
    static const std::string emptyString;
};
