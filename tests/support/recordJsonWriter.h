#pragma once

#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordFields.h"
#include "gqtool/records/textEncoding.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

// Records as JSON, as gqtool prints them, with the fields in the order of the bytes. tests/golden/README.md describes the
// JSON.

class RecordJsonWriter : public Fields {
public:
    explicit RecordJsonWriter(bool omitUnread) : omitsUnread(omitUnread) {}

    using Fields::field;
    void field(const char* name, unsigned char& value) override { json.add(name, value); }
    void field(const char* name, unsigned int& value) override { json.add(name, value); }
    void field(const char* name, int& value) override { json.add(name, value); }
    void field(const char* name, float& value) override { json.add(name, value); }
    void field(const char* name, double& value) override { json.add(name, value); }
    void field(const char* name, std::string& text) override { json.add(name, RecordText(text).value()); }
    void field(const char* name, QString& text) override { json.add(name, text.toStdString()); }
    void slot(const char* name, std::string& text) override { field(name, text); }
    void bytes(const char* name, unsigned char* first, int size) override
    {
        json.add(name, viewOf(first, static_cast<size_t>(size)));
    }
    void bytes(const char* name, std::vector<unsigned char>& value) override
    {
        json.add(name, viewOf(value.data(), value.size()));
    }
    void skip() override {}
    void samples(StoredWave& wave) override
    {
        add("marks", wave.marks);
        if (wave.hasIntegers() && !omitsUnread)
            add("stored", wave.stored);
        std::vector<float> samples = wave.samples;
        if (wave.hasIntegers() && omitsUnread)
            std::replace_if(
                samples.begin(), samples.end(), [](float sample) { return std::isnan(sample); },
                std::numeric_limits<float>::quiet_NaN());
        add("samples", samples);
    }
    void lostText(const char* name, std::string& text) override
    {
        if (!omitsUnread)
            field(name, text);
    }
    void lostSlot(const char* name, std::string& text) override { lostText(name, text); }

    void beginRecord(const char* name) override { json.begin(name, '{'); }
    void endRecord() override { json.end('}'); }
    unsigned int beginList(const char* name, int, size_t size) override
    {
        json.begin(name, '[');
        return static_cast<unsigned int>(size);
    }
    bool beginItem(unsigned int) override { return true; }
    void endItem() override {}
    void endList() override { json.end(']'); }

    JsonBuilder json;

private:
    static std::string_view viewOf(const unsigned char* bytes, size_t size)
    {
        return {reinterpret_cast<const char*>(bytes), size};
    }

    template <typename Item>
    void add(const char* name, const std::vector<Item>& items)
    {
        json.begin(name, '[');
        for (const Item item : items)
            json.add(nullptr, item);
        json.end(']');
    }

    bool omitsUnread;
};

inline std::string jsonOf(Content& content)
{
    RecordJsonWriter writer(false);
    content.walk(writer);
    return writer.json.text;
}

// Leaves out what the library's readers do not return: some texts, and the stored integers of a wave. Each sample
// that is calculated from these and is NaN becomes the same NaN: processors differ in its bits.
inline std::string comparableJsonOf(Content& content)
{
    RecordJsonWriter writer(true);
    content.walk(writer);
    return writer.json.text;
}
