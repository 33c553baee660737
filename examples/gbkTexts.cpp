// Writes a record with a text in GBK and reads it back; then reads a list of texts in GBK.
//   gbkTexts TEXT...     each TEXT is in UTF-8

#include <gqLib/byte2Rdb.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <iconv.h>

//! [convert]
// Converts `text`, for example from "GBK" to "UTF-8". Returns false if it is not valid in `from` or has a character
// that `to` lacks; `out` is then unchanged.
static bool convert(const char* from, const char* to, std::string text, std::string& out)
{
    const iconv_t converter = iconv_open(to, from);
    if (reinterpret_cast<intptr_t>(converter) == -1)
        return false;                          // no such encoding
    std::string result(4 * text.size(), '\0'); // four bytes are enough for a character of any of these encodings
    char* source = &text[0];
    char* target = &result[0];
    size_t sourceLeft = text.size();
    size_t targetLeft = result.size();
    const bool ok = iconv(converter, &source, &sourceLeft, &target, &targetLeft) != static_cast<size_t>(-1);
    iconv_close(converter);
    if (ok)
        out.assign(result, 0, result.size() - targetLeft);
    return ok;
}
//! [convert]

//! [list]
// Reads the texts of a string list as they are; CSocketAPI::parseStrings would read them as UTF-8. `buf` points to the
// payload, `len` is its length. Returns 1, or -5 if the texts exceed the payload; those before are in `out`.
static int readTexts(const char* buf, int len, std::vector<std::string>& out)
{
    if (len < 4)
        return -5;
    unsigned int count = gqdb::CByte2Val::byte2UInt(buf);
    int pos = 4;
    for (; count > 0; --count) {
        if (len - pos < 2)
            return -5;
        const int size = gqdb::CByte2Val::byte2UShort(buf + pos); // of the item
        pos += 2;
        if (len - pos < size)
            return -5;
        out.emplace_back();
        gqdb::CByte2Val::byte2Str(buf + pos, size, out.back());
        pos += size;
    }
    return 1;
}
//! [list]

static void print(const char* title, const std::string& gbk)
{
    std::string utf8;
    if (convert("GBK", "UTF-8", gbk, utf8))
        std::printf("%s: %s\n", title, utf8.c_str());
    else
        std::printf("%s: not GBK\n", title);
}

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: gbkTexts TEXT...\n");
        return 2;
    }
    QByteArray list; // the payload of a reply
    gqdb::CByte2Val::int2Byte(argc - 1, list);
    for (int i = 1; i < argc; ++i) {
        //! [record]
        gqdb::PointInfo point;
        point.pointId = 1000;
        if (!convert("UTF-8", "GBK", argv[i], point.text1)) {
            std::fprintf(stderr, "gbkTexts: %s is not possible in GBK\n", argv[i]);
            return 1;
        }
        QByteArray bytes;
        gqdb::CByte2Rdb::pointInfo2Byte(point, bytes);
        //! [record]
        std::printf("%s\n", bytes.toHex(' ').constData());
        gqdb::PointInfo read;
        if (gqdb::CByte2Rdb::byte2PointInfo(bytes.constData(), static_cast<int>(bytes.size()), read) > 0)
            print("record", read.text1);

        QByteArray item;
        gqdb::CByte2Val::str2Byte(point.text1, item);
        gqdb::CByte2Val::short2Byte(static_cast<int>(item.size()), list);
        list.append(item);
    }
    std::vector<std::string> texts;
    if (readTexts(list.constData(), static_cast<int>(list.size()), texts) == 1) {
        for (const std::string& text : texts)
            print("list", text);
    }
    return 0;
}
