#include "bookdescription.h"

const std::string BookDescription::emptyString;

BookDescription::BookDescription(const std::vector<std::string>& fields) {
    setData(fields);
}

bool BookDescription::setData(const std::vector<std::string>& fields) {
    if (fields.size() != FieldCount)
        return false;
    data = fields;
    return true;
}

const std::string& BookDescription::field(std::size_t index) const {
    if (data.size() != FieldCount || index >= FieldCount)
        return emptyString;
    return data[index];
}
