// Favourites in a real folder.

#include "objects/config/browser/Favorites.h"
#include "ZelBase/Handles.h"
#include "objects/config/browser/FavoriteName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include <windows.h>

namespace tervane {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class FavoritesTest : public testing::Test {
protected:
    FavoritesTest() {
        fs::remove_all(root_);
        fs::create_directories(folder_);
    }
    ~FavoritesTest() override { fs::remove_all(root_); }

    void WriteFile(const std::wstring& name, const std::string& bytes) {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
    }
    std::string ReadFile(const std::wstring& name) {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::set<std::wstring> Names() {
        std::set<std::wstring> names;
        for (std::size_t i = 0, count = favorites_.Count(); i < count; ++i) {
            names.insert(*favorites_.Name(i));
        }
        return names;
    }
    std::wstring UrlOf(const std::wstring& name) {
        for (std::size_t i = 0, count = favorites_.Count(); i < count; ++i) {
            if (favorites_.Name(i) == name) {
                return *favorites_.Url(i);
            }
        }
        return L"no such favourite";
    }
    // Every file that the tests could have made, wherever a name may have led.
    std::size_t FilesBelowRoot() {
        return std::distance(fs::recursive_directory_iterator(root_), {});
    }

    fs::path root_ = fs::temp_directory_path() / L"tervane favourites test";
    fs::path folder_ = root_ / L"Favorites";
    Favorites favorites_{[this](bool) { return folder_.wstring(); }};
};

TEST_F(FavoritesTest, AreTheInternetShortcutsOfTheFolder) {
    WriteFile(L"plain.url", "[InternetShortcut]\r\nURL=http://plain.example/\r\nModified=00\r\n");
    WriteFile(L"Upper.URL", "[DEFAULT]\r\nBASEURL=x\r\n[internetshortcut]\r\nurl=http://u/?a=b;c");
    WriteFile(L"no section.url", "URL=http://nowhere/\r\n");
    WriteFile(L"other section.url", "[Other]\r\nURL=http://nowhere/\r\n");
    WriteFile(L"empty.url", "");
    WriteFile(L"noise.url", std::string("\0\xFF[[[\r\r=\n", 9));
    WriteFile(L"long.url", "[InternetShortcut]\r\nURL=http://long/" + std::string(5000, 'x'));
    WriteFile(L"text.url.txt", "[InternetShortcut]\r\nURL=http://text/\r\n");
    WriteFile(L"url", "");
    fs::create_directory(folder_ / L"folder.url");

    EXPECT_EQ((std::set<std::wstring>{L"plain", L"Upper", L"no section", L"other section", L"empty",
                                      L"noise", L"long"}),
              Names());
    EXPECT_EQ(L"http://plain.example/", UrlOf(L"plain"));
    EXPECT_EQ(L"http://u/?a=b;c", UrlOf(L"Upper"));
    for (const wchar_t* name : {L"no section", L"other section", L"empty", L"noise"}) {
        EXPECT_EQ(L"", UrlOf(name)) << name;
    }
    EXPECT_EQ(12u + 5000u, UrlOf(L"long").size());
    EXPECT_EQ(std::nullopt, favorites_.Name(7));
    EXPECT_EQ(std::nullopt, favorites_.Url(7));
}

TEST_F(FavoritesTest, KeepTheirOrderWhileOthersComeAndGo) {
    for (int i = 0; i < 300; ++i) {
        WriteFile(L"f" + std::to_wstring(i) + L".url",
                  "[InternetShortcut]\r\nURL=http://" + std::to_string(i) + "\r\n");
    }
    ASSERT_EQ(300u, favorites_.Count());
    std::vector<std::wstring> before;
    for (std::size_t i = 0; i < 300; ++i) {
        before.push_back(*favorites_.Name(i));
        EXPECT_EQ(L"http://" + before.back().substr(1), favorites_.Url(i));
    }
    WriteFile(L"a new one.url", "");
    fs::remove(folder_ / (before[100] + L".URL"));
    EXPECT_EQ(before[100], favorites_.Name(100)); // until somebody looks
    EXPECT_EQ(L"", favorites_.Url(100));
    EXPECT_EQ(300u, favorites_.Count());
    before.erase(before.begin() + 100);
    before.push_back(L"a new one");
    for (std::size_t i = 0; i < 300; ++i) {
        EXPECT_EQ(before[i], favorites_.Name(i));
    }
    fs::remove_all(folder_);
    EXPECT_EQ(0u, favorites_.Count());
}

TEST_F(FavoritesTest, AddedAreWrittenAsShortcuts) {
    EXPECT_TRUE(favorites_.Add(L"A. Müller & Co", L"http://example.org/?q=a%20b#c"));
    EXPECT_EQ("[InternetShortcut]\r\nURL=http://example.org/?q=a%20b#c\r\n",
              ReadFile(L"A. Müller & Co.URL"));
    // One that the browser made keeps what else it says.
    WriteFile(L"old.url", "[DEFAULT]\r\nBASEURL=http://old/\r\n[InternetShortcut]\r\n"
                          "URL=http://old/\r\nIconIndex=1\r\n");
    EXPECT_TRUE(favorites_.Add(L"old", L"http://new/"));
    EXPECT_EQ(L"http://new/", UrlOf(L"old"));
    EXPECT_NE(std::string::npos, ReadFile(L"old.url").find("IconIndex=1"));
    EXPECT_NE(std::string::npos, ReadFile(L"old.url").find("BASEURL=http://old/"));
    // An address in characters of any script.
    EXPECT_TRUE(favorites_.Add(L"Привет", L"http://пример/中文"));
    EXPECT_EQ(L"http://пример/中文", UrlOf(L"Привет"));
    EXPECT_EQ(1u + 3u, FilesBelowRoot());
}

TEST_F(FavoritesTest, RefuseNamesThatAreNoFileNamesAndWriteNothing) {
    const std::wstring longName(252, L'x');
    std::vector<std::wstring> names = {L"",      L" ",         L" . ",  L"a\nb",
                                       L"a\0b"s, L"com\u00B2", L"Aux ", longName};
    std::wistringstream words(
        LR"(..\escaped ../escaped C:\escaped a:b a* a? "a" <a> a|b \\server\share
                                  . .. NUL con prn.txt COM1 lpt9.a.b CONIN$)");
    names.insert(names.end(), std::istream_iterator<std::wstring, wchar_t>(words), {});
    for (const std::wstring& name : names) {
        EXPECT_FALSE(favorites_.Add(name, L"http://x/")) << name.c_str();
    }
    for (const std::wstring& url : {L""s, L" http://x/"s, L"http://x/ "s, L"http://x/\r\n[Other]"s,
                                    L"a\0b"s, L"\"quoted\""s}) {
        EXPECT_FALSE(favorites_.Add(L"name", url)) << url.c_str();
    }
    // Fits as a name, not as a path of this folder.
    EXPECT_TRUE(IsFavoriteName(longName.substr(1)));
    EXPECT_FALSE(favorites_.Add(longName.substr(1), L"http://x/"));
    for (const wchar_t* name :
         {L"COM", L"COM0", L"COM10", L"CONSOLE", L"nul a", L".hidden", L"a.b "}) {
        EXPECT_TRUE(IsFavoriteName(name)) << name;
    }
    EXPECT_EQ(1u, FilesBelowRoot());
}

TEST_F(FavoritesTest, StayAsTheyWereWhenTheyCannotBeWritten) {
    const std::string narrow = "[InternetShortcut]\r\nURL=http://old/\r\n";
    WriteFile(L"narrow.URL", narrow);
    EXPECT_FALSE(favorites_.Add(L"narrow", L"http://中文/"));
    EXPECT_EQ(narrow, ReadFile(L"narrow.URL"));
    fs::create_directory(folder_ / L"taken.URL");
    EXPECT_FALSE(favorites_.Add(L"taken", L"http://x/"));
    WriteFile(L"locked.URL", narrow);
    SetFileAttributesW((folder_ / L"locked.URL").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(favorites_.Add(L"locked", L"http://x/"));
    EXPECT_EQ(narrow, ReadFile(L"locked.URL"));
    EXPECT_EQ(1u + 3u, FilesBelowRoot());
    SetFileAttributesW((folder_ / L"locked.URL").c_str(), FILE_ATTRIBUTE_NORMAL);
    {
        // Nobody else can read it, so what else it says would be lost.
        const ZelBase::UniqueFile inUse(CreateFileW((folder_ / L"narrow.URL").c_str(), GENERIC_READ,
                                                    0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(inUse);
        EXPECT_EQ(L"", UrlOf(L"narrow"));
        EXPECT_FALSE(favorites_.Add(L"narrow", L"http://x/"));
    }
    EXPECT_EQ(narrow, ReadFile(L"narrow.URL"));
    EXPECT_EQ(1u + 3u, FilesBelowRoot());

    Favorites nowhere([](bool) { return std::wstring(); });
    EXPECT_EQ(0u, nowhere.Count());
    EXPECT_FALSE(nowhere.Add(L"name", L"http://x/"));
}

} // namespace
} // namespace tervane
