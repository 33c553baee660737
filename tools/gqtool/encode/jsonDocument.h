#pragma once

#include "gqtool/bytes/byteSource.h"
#include "gqtool/records/jsonText.h"

// Receives the members of a JSON object in their order.
class DocumentListener {
public:
    virtual ~DocumentListener() = default;

    // Returns false if the member is not wanted.
    virtual bool wants(const std::string& name) = 0;

    virtual void member(const std::string& name, const Json& value) = 0;

    // Returns true if the items of an array are to be passed one by one, to item(), instead of the whole array.
    virtual bool beginItems(const std::string& name) = 0;
    virtual void item(const Json& value) = 0;
};

// Reads a JSON object without keeping it. Returns an error, which names the place in the text; empty on success.
QString readDocument(ByteSource& text, DocumentListener& listener);
