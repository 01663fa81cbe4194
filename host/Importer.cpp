#include <host/Importer.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include <sys/stat.h>

#include <host/BusyNotice.h>
#include <host/Interrupt.h>

namespace HynHost
{
namespace
{
using Clock = std::chrono::steady_clock;

constexpr std::size_t kBatchFiles = 512;
constexpr auto kBatchTime = std::chrono::seconds(2); // large files on slow disks are stored sooner
constexpr std::size_t kMostProblems = 10000;

// Whether a file that the catalogue holds is there no more. What merely cannot be reached is not gone.
bool IsGone(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0)
        return !S_ISREG(status.st_mode);
    return errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
}
} // namespace

Importer::Importer(Catalog& catalog, std::string folder, FolderWalk::Links links, Progress& progress)
    : m_catalog(catalog), m_files(catalog),
      m_catalogFile(std::filesystem::canonical(catalog.GetDatabase().File()).string()), m_folder(std::move(folder)),
      m_links(links), m_progress(progress),
      m_walk(m_folder, links, [this](const std::string& path, const std::string& reason) { AddProblem(path, reason); })
{
    if (!m_folder.ends_with('/'))
        m_folder += '/';
    m_batch.reserve(kBatchFiles);
}

void Importer::Run()
{
    CountFiles();
    m_progress.Start(m_report.total);
    while (!Interrupt::Requested() && FillBatch())
    {
        LookUpBatch();
        ReadBatch();
    }
    m_report.passedLinks = m_walk.PassedLinks();
    if (!Interrupt::Requested())
        RemoveGone();
    m_report.interrupted = Interrupt::Requested();
    m_progress.Clear();
}

void Importer::TellInterrupted() const
{
    m_progress.Clear();
    const std::string of = m_report.total == 0 ? std::string() : " of " + std::to_string(m_report.total);
    std::fprintf(stderr, "hynhost: interrupted after %llu%s files; what they told is in the catalogue\n",
                 static_cast<unsigned long long>(m_report.done), of.c_str());
}

// Only a bar needs the total; the walk for it is short and brings what the real one needs into memory.
void Importer::CountFiles()
{
    if (!m_progress.WantsTotal())
        return;
    FolderWalk walk(m_folder, m_links, [](const std::string&, const std::string&) {});
    while (!Interrupt::Requested() && walk.Next())
        ++m_report.total;
}

bool Importer::FillBatch()
{
    m_batch.clear();
    m_stored = 0;
    while (m_batch.size() < kBatchFiles && !Interrupt::Requested())
    {
        auto file = m_walk.Next();
        if (!file)
            break;
        if (!IsCatalog(*file))
            m_batch.push_back({std::move(*file), std::nullopt, {}});
    }
    return !m_batch.empty();
}

void Importer::LookUpBatch()
{
    Transaction transaction = Begin(Transaction::Kind::Read);
    for (Item& item : m_batch)
        item.known = m_files.Find(item.file.folder, item.file.name);
    transaction.Commit();
}

void Importer::ReadBatch()
{
    auto storeAt = Clock::now() + kBatchTime;
    std::size_t read = 0;
    for (; read < m_batch.size() && !Interrupt::Requested(); ++read)
    {
        Item& item = m_batch[read];
        if (!item.IsUnchanged())
            item.facts = m_recogniser.Recognise(item.Path());
        m_progress.Update(m_report.done + read - m_stored);
        if (Clock::now() >= storeAt)
        {
            StoreRead(read + 1);
            storeAt = Clock::now() + kBatchTime;
        }
    }
    StoreRead(read);
}

// Stores the items of the batch up to `end` and counts them. Those that changed nothing cost no write.
void Importer::StoreRead(std::size_t end)
{
    const auto first = m_batch.cbegin() + static_cast<std::ptrdiff_t>(m_stored);
    const auto last = m_batch.cbegin() + static_cast<std::ptrdiff_t>(end);
    const auto wasRead = [](const Item& item)
    {
        return item.facts.wasRead;
    };
    if (std::any_of(first, last, wasRead))
    {
        Transaction transaction = Begin(Transaction::Kind::Exclusive);
        for (auto item = first; item != last; ++item)
        {
            if (item->facts.wasRead)
                m_files.Store(item->file.folder, item->file.name, item->facts);
        }
        transaction.Commit();
    }
    std::for_each(first, last, [this](const Item& item) { Settle(item); });
    m_stored = end;
}

void Importer::Settle(const Item& item)
{
    ++m_report.done;
    if (item.facts.wasRead || item.known)
        ++m_inCatalog;
    const bool wasMedia = item.known && item.known->isMedia;
    const bool isMedia = item.facts.wasRead ? item.facts.kind.has_value() : wasMedia;
    const std::string& problem = item.IsUnchanged() ? item.known->problem : item.facts.problem;
    if (!problem.empty())
        AddProblem(item.Path(), problem);

    if (!isMedia && wasMedia)
        ++m_report.gone;
    else if (!isMedia && (item.facts.wasRead || item.known))
        ++m_report.others;
    else if (isMedia && !wasMedia)
        ++m_report.added;
    else if (isMedia && item.facts.wasRead)
        ++m_report.changed;
    else if (isMedia)
        ++m_report.unchanged;
}

// Asks the file system about every file that the catalogue holds below the folder, page by page.
void Importer::RemoveGone()
{
    constexpr int kPage = 512;
    bool removed = false;
    long long after = 0;
    while (!Interrupt::Requested())
    {
        Transaction transaction = Begin(Transaction::Kind::Read);
        if (after == 0 && m_files.CountBelow(m_folder) == m_inCatalog)
            return; // what was found is all that there is
        auto files = m_files.FilesBelow(m_folder, after, kPage);
        transaction.Commit();
        if (files.empty())
            break;
        after = files.back().id;
        std::erase_if(files, [](const StoredFile& file) { return !IsGone(file.path); });
        RemoveFiles(files);
        removed = removed || !files.empty();
    }
    if (!removed)
        return;
    Transaction transaction = Begin(Transaction::Kind::Exclusive);
    m_files.RemoveEmptyFolders(m_folder);
    transaction.Commit();
}

void Importer::RemoveFiles(const std::vector<StoredFile>& files)
{
    if (files.empty())
        return;
    Transaction transaction = Begin(Transaction::Kind::Exclusive);
    for (const StoredFile& file : files)
        m_files.Remove(file.id);
    transaction.Commit();
    m_report.gone += static_cast<std::uint64_t>(std::ranges::count(files, true, &StoredFile::isMedia));
}

void Importer::AddProblem(const std::string& path, const std::string& reason)
{
    if (m_report.problems.size() < kMostProblems)
        m_report.problems.push_back({path, reason});
    else
        ++m_report.moreProblems;
}

// The catalogue may lie in the folder; looking at it would change it each time.
bool Importer::IsCatalog(const WalkedFile& file) const
{
    const std::string path = file.folder + file.name;
    return path.starts_with(m_catalogFile) && (path == m_catalogFile || path == m_catalogFile + "-journal");
}

Transaction Importer::Begin(Transaction::Kind kind)
{
    const BusyNotice notice(
        [this]
        {
            m_progress.Clear();
            std::fputs("hynhost: waiting for the catalogue: another program is using it\n", stderr);
        },
        [this] { TellInterrupted(); });
    return Transaction(m_catalog.GetDatabase(), kind);
}
} // namespace HynHost
