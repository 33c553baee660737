#include "seeds.h"

#include "support/goldenFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

static QByteArray contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return QByteArray::fromStdString(content.str());
}

std::vector<QByteArray> allSeeds()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(GQLIB_GOLDEN)) {
        if (entry.path().extension() == ".hex")
            names.push_back(std::filesystem::relative(entry.path(), GQLIB_GOLDEN).string());
    }
    std::sort(names.begin(), names.end());

    std::vector<QByteArray> seeds;
    for (const std::string& name : names) {
        const QByteArray bytes = goldenFile(name);
        seeds.push_back(bytes);
        seeds.push_back(bytes.mid(10));
        seeds.push_back(QByteArray::fromHex("01000000") + bytes);
        seeds.push_back(QByteArray::fromHex("02000000") + bytes + bytes);
        const char size = static_cast<char>(std::min(static_cast<int>(bytes.size()), 255));
        seeds.push_back(size + bytes + size + bytes);
    }
    for (const auto& entry : std::filesystem::directory_iterator(GQLIB_GOLDEN "/dumps"))
        seeds.push_back(contentOf(entry.path()));
    return seeds;
}
