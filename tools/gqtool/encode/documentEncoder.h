#pragma once

#include "gqtool/bytes/spool.h"
#include "gqtool/records/recordFields.h"
#include "jsonDocument.h"

#include <QStringList>

#include <nlohmann/json.hpp>

// Encodes {"as": FORM, "value": ...} and the other members that decode --json prints. If "as" is before "value", the
// items of a list and of frames are encoded one by one.
class DocumentEncoder : public DocumentListener {
public:
    explicit DocumentEncoder(int mostErrors) : errorLimit(mostErrors) {}

    bool wants(const std::string& name) override;
    void member(const std::string& name, const Json& value) override;
    bool beginItems(const std::string& name) override;
    void item(const Json& value) override;

    // Ends the document.
    void end();

    void fail(const QStringList& messages);
    const QStringList& errors() const { return firstErrors; } // each with the path of its field
    long long otherErrors() const { return errorCount - firstErrors.size(); }

    // Passes the encoded bytes to `print`. Returns false and the reason if they could not be kept.
    bool printAll(const std::function<void(const QByteArray& bytes)>& print, QString& error);

private:
    void setForm(const Json& name);
    void encodeValue(const Json& value);

    int errorLimit;
    QStringList firstErrors;
    long long errorCount = 0;

    QStringList seen; // members
    const Form* form = nullptr;
    std::unique_ptr<Content> content; // of the form
    bool isFrames = false;
    Json early; // a value before its form
    bool isCounted = false;
    unsigned int count = 0; // of items
    Spool encoded;
    QByteArray behind;
};
