#include "common/files/file_system.h"

#include <set>

#include "common/files/busca_ficheros.h"
#include "common/sys/sync.h"
#include "platform/coredll/coredll.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

TEST(FileNames, AreCutJoinedAndNormalised) {
    struct {
        const char *path, *directory, *name, *with_extension, *normal;
    } const cases[] = {
        {"\\a\\b.txt", "\\a", "b.txt", "\\a\\b.BAK", "\\a\\b.txt"},
        {"dir/sub\\n.txt", "dir/sub", "n.txt", "dir/sub\\n.BAK", "dir\\sub\\n.txt"},
        {"a.d\\name", "a.d", "name", "a.d\\name.BAK", "a.d\\name"},
        {"a.d/name", "", "name", "a.BAK", "a.d\\name"},  // only a "\" ends the search for the "."
        {"", "", "", ".BAK", ""},
        {"\\a\\.\\\\c\\..\\d\\", "\\a\\.\\\\c\\..\\d", "", "\\a\\.\\\\c\\..\\d\\.BAK", "\\a\\d"},
        {"\\..\\..\\x", "\\..\\..", "x", "\\..\\..\\x.BAK", "\\x"},
        {"a\\..\\..\\b", "a\\..\\..", "b", "a\\..\\..\\b.BAK", "b"},
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(DirectoryPart(c.path).c_str(), c.directory) << c.path;
        EXPECT_STREQ(FileNamePart(c.path).c_str(), c.name) << c.path;
        EXPECT_STREQ(NormalizePath(c.path).c_str(), c.normal) << c.path;
        DString path(c.path);
        SetExtension(path, "BAK");
        EXPECT_STREQ(path.c_str(), c.with_extension) << c.path;
    }
    DString path("a.txt");
    SetExtension(path, ".b");
    EXPECT_STREQ(path.c_str(), "a.b");
    SetExtension(path, "");
    EXPECT_STREQ(JoinPath(path, JoinPath("b/", JoinPath("", "c"))).c_str(), "a\\b/c");
}

using FileSystemTest = FilesTest;

TEST(FileNames, APartKeepsItsPathsCodepage) {
    DString path("\\a\\b.itv");
    path.set_codepage(1251);
    EXPECT_EQ(FileNamePart(path).codepage(), 1251);
    EXPECT_EQ(DirectoryPart(path).codepage(), 1251);
}

TEST_F(FileSystemTest, TestsCopiesMovesAndDeletes) {
    Lock lock;
    FileSystemLock() = &lock;
    Put("a", "A");
    Put("b", "B");
    Put(".hidden", "");
    EXPECT_TRUE(FileExists(Name("a")) && FileExists(Name("")) && !FileExists(Name("none")));
    EXPECT_TRUE(DirectoryExists(Name(""), false) && DirectoryExists(Name("none"), true));
    EXPECT_FALSE(DirectoryExists(Name("a"), false) || DirectoryExists(Name("no\\a"), true));
    EXPECT_TRUE(IsHidden(Name(".hidden")) && IsReadOnly(Name("none")) && IsHidden(Name("none")));
    EXPECT_FALSE(IsReadOnly(Name("a")) || IsHidden(Name("a")));
    EXPECT_FALSE(CopyFileTo(Name("a"), Name("b"), true) || MoveFileTo(Name("a"), Name("b")));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(Get("b"), "B");
    EXPECT_TRUE(CopyFileTo(Name("a"), Name("b"), false));
    EXPECT_EQ(Get("b"), "A");
    EXPECT_TRUE(RemoveFile(Name("b")) && MoveFileTo(Name("a"), Name("b")));
    EXPECT_FALSE(RemoveFile(Name("a")) || CopyFileTo(Name("a"), Name("c"), false));
    std::filesystem::permissions(Host("b"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(IsReadOnly(Name("b")));
    FileSystemLock() = nullptr;
}

TEST_F(FileSystemTest, MakesChainsOfFolders) {
    struct {
        const char* path;
        bool of_file, made;
        const char* folder;  // that is then there
    } const cases[] = {{"a\\b\\c", false, true, "a/b/c"},  {"a\\b\\c", false, true, "a/b/c"},
                       {"d\\e\\f.txt", true, true, "d/e"}, {"g/h\\", false, true, "g/h"},
                       {"i\\..\\j", false, true, "j"},     {"file\\x", false, false, ""},
                       {"bad?\\x", false, false, ""},      {"f.txt", true, true, ""}};
    Put("file", "");
    for (const auto& c : cases) {
        EXPECT_EQ(MakeDirectory(Name(c.path), c.of_file), c.made) << c.path;
        EXPECT_TRUE(std::filesystem::is_directory(Host(c.folder))) << c.path;
    }
    EXPECT_FALSE(IsThere("d/e/f.txt") || IsThere("i"));
    EXPECT_TRUE(MakeDirectory("\\", false) && MakeDirectory("\\x", true));
    EXPECT_TRUE(MakeDirectory("..", false));  // the root again
    EXPECT_FALSE(MakeDirectory("", false));
    EXPECT_FALSE(MakeDirectory((std::string(100'000, '\\') + "x").c_str(), false));
}

TEST_F(FileSystemTest, NamesFilesInTheirCodepage) {
    SetCurrentCodepage(65001);
    DString name("\\elsewhere/some.dat");
    EXPECT_TRUE(ModuleDirectoryPath(name));
    std::string expected = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::replace(expected.begin(), expected.end(), '/', '\\');
    EXPECT_EQ(name.c_str(), expected + "\\some.dat");
    Put("\xC3\xB1", "A");
    const DString euro = Name("\xE2\x82\xAC");
    EXPECT_TRUE(CopyFileTo(Name("\xC3\xB1"), euro, true));
    EXPECT_EQ(Get("\xE2\x82\xAC"), "A");
    TBuscaFicheros search(Name("\xE2\x82\xAC*"));
    ASSERT_TRUE(search.Next());
    EXPECT_STREQ(search.Path().c_str(), euro.c_str());
}

TEST_F(FileSystemTest, EnumeratesOneFolder) {
    Put("a.txt", "12345");
    Put(".c.txt", "1");
    Put("other", "");
    std::filesystem::create_directory(Host("d.txt"));
    Put("d.txt/e.txt", "");
    TBuscaFicheros search(Name("*.txt"));
    search.SetWithDetails(true);
    for (const bool hidden : {false, true}) {
        search.SetIncludeHidden(hidden);
        std::set<std::string> found;
        while (search.Next()) {
            found.insert(std::string(search.Path().c_str()) + (search.IsDirectory() ? "/" : "=") +
                         std::to_string(search.Size()));
            EXPECT_EQ(search.Details().size, search.Size());
            EXPECT_EQ((search.Details().attributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                      search.IsDirectory());
            EXPECT_NE(search.Details().written.dwHighDateTime, 0U);
        }
        std::set<std::string> expected = {Name("a.txt").c_str() + std::string("=5"),
                                          Name("d.txt").c_str() + std::string("/0")};
        if (hidden)
            expected.insert(Name(".c.txt").c_str() + std::string("=1"));
        EXPECT_EQ(found, expected);
    }
    EXPECT_FALSE(TBuscaFicheros(Name("*.none")).Next() || TBuscaFicheros(Name("no\\*")).Next());
}

}  // namespace
}  // namespace zelto::test
