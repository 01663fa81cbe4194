#include <host/Importer.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>

#include <sys/stat.h>

#include <host/CatalogVolumes.h>
#include <host/DatabaseFile.h>

namespace HynHost
{
namespace
{
using Clock = std::chrono::steady_clock;

constexpr std::size_t kBatchFiles = 256;
constexpr auto kBatchTime = std::chrono::seconds(2); // large files on slow disks are stored sooner
constexpr auto kTellEvery = std::chrono::milliseconds(100);
constexpr std::size_t kMostProblems = 10000;

// Whether a file that the catalogue holds is there no more. What merely cannot be reached is not gone.
bool IsGone(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0)
        return !S_ISREG(status.st_mode);
    return errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
}

// The catalogue as a walk would give it. One that only the engine can find is in no folder.
std::string PlaceOfCatalog(Catalog& catalog)
{
    const std::string& file = catalog.GetDatabase().File();
    return IsEngineName(file) ? std::string() : std::filesystem::canonical(file).string();
}
} // namespace

Importer::Importer(Catalog& catalog, const ImportScope& scope, FolderWalk::Links links, ImportObserver& observer,
                   std::function<void(const FileJobPtr&)> handOut)
    : m_catalog(catalog), m_files(catalog), m_catalogFile(PlaceOfCatalog(catalog)), m_observer(observer),
      m_handOut(std::move(handOut)),
      m_walk(scope.folder, links, scope.passed,
             [this](const std::string& path, const std::string& reason) { AddProblem(path, reason); }),
      m_storeAt(Clock::now() + kBatchTime)
{
    for (const Volume& volume : scope.volumes)
        m_parts.push_back({volume, 0, "/"});
    const std::string top = scope.folder.substr(m_parts.front().volume.mount.size());
    m_parts.front().top = top.ends_with('/') ? top : top + '/';
    m_read.reserve(kBatchFiles);
}

void Importer::Start()
{
    EnterVolumes();
    HandOutMore();
}

// Volumes that are where they were cost no write.
void Importer::EnterVolumes()
{
    Database& database = m_catalog.GetDatabase();
    const auto findAll = [&]
    {
        const Transaction transaction = Begin(Transaction::Kind::Read);
        return std::ranges::all_of(m_parts,
                                   [&](Part& part)
                                   {
                                       const auto id = FindVolume(database, part.volume);
                                       part.id = id.value_or(0);
                                       return id.has_value();
                                   });
    };
    if (findAll())
        return;
    Transaction transaction = Begin(Transaction::Kind::Exclusive);
    for (Part& part : m_parts)
        part.id = EnterVolume(database, part.volume);
    transaction.Commit();
}

// Where a folder lies. The first volume holds all that no other does; inner ones follow outer ones.
const Importer::Part& Importer::PartOf(const std::string& folder) const
{
    for (std::size_t i = m_parts.size() - 1; i > 0; --i)
    {
        const std::string& mount = m_parts[i].volume.mount;
        if (folder.starts_with(mount) && folder[mount.size()] == '/')
            return m_parts[i];
    }
    return m_parts.front();
}

// A folder as the catalogue keeps it; `folder` has a "/" at its end and outlives the result.
StoredFolder Importer::Place(const std::string& folder) const
{
    const Part& part = PartOf(folder);
    return {part.id, std::string_view(folder).substr(part.volume.mount.size())};
}

void Importer::TakeBack(FileJobPtr spJob)
{
    --m_out;
    const std::string folder = spJob->value.file.folder;
    m_read.push_back(std::move(spJob));
    if (m_read.size() >= kBatchFiles || Clock::now() >= m_storeAt)
        StoreRead();
    Tell(folder);
    HandOutMore();
}

void Importer::Tell(const std::string& folder)
{
    const auto now = Clock::now();
    if (now < m_tellAt)
        return;
    m_tellAt = now + kTellEvery;
    m_observer.OnProgress(m_report, m_report.done + m_read.size(), folder);
}

void Importer::StopEarly()
{
    m_report.interrupted = true;
    StoreRead();
    m_report.passedLinks = m_walk.PassedLinks();
    m_done = true;
}

// Keeps the readers busy, and ends the import when there is nothing left to read. Readers run dry only when a whole
// batch is stored faster than they read half of what is out.
void Importer::HandOutMore()
{
    while (!m_walkEnded && m_out < kMostJobs / 2 && !m_observer.MustStop())
    {
        const Jobs jobs = FindSome();
        LookUp(jobs);
        for (const FileJobPtr& spJob : jobs)
        {
            if (spJob->value.IsUnchanged())
            {
                Settle(spJob->value);
                continue;
            }
            ++m_out;
            m_handOut(spJob);
        }
        if (!jobs.empty())
            Tell(jobs.back()->value.file.folder);
    }
    if (m_walkEnded && m_out == 0 && !m_done)
        Finish();
}

Importer::Jobs Importer::FindSome()
{
    Jobs jobs;
    while (jobs.size() < kBatchFiles && !m_observer.MustStop())
    {
        auto file = m_walk.Next();
        if (!file)
        {
            m_walkEnded = true;
            break;
        }
        if (!IsCatalog(*file))
            jobs.emplace_back(new Carried<FileJob>({std::move(*file), std::nullopt, {}, std::nullopt}));
    }
    return jobs;
}

void Importer::LookUp(const Jobs& jobs)
{
    Transaction transaction = Begin(Transaction::Kind::Read);
    for (const FileJobPtr& spJob : jobs)
    {
        FileJob& job = spJob->value;
        job.known = m_files.Find(Place(job.file.folder), job.file.name);
        if (job.known && !PartOf(job.file.folder).volume.keepsInodes)
            job.known->stamp.inode = job.file.stamp.inode;
    }
    transaction.Commit();
}

// Stores what has come back and counts it. Files that could not be read cost no write.
void Importer::StoreRead()
{
    const auto wasRead = [](const FileJobPtr& spJob)
    {
        return spJob->value.facts.wasRead;
    };
    if (std::ranges::any_of(m_read, wasRead))
    {
        Transaction transaction = Begin(Transaction::Kind::Exclusive);
        for (const FileJobPtr& spJob : m_read)
        {
            const FileJob& job = spJob->value;
            if (job.facts.wasRead)
                m_files.Store(Place(job.file.folder), job.file.name, job.facts);
            if (job.facts.wasRead && job.thumbnail)
                m_files.StoreThumbnail(Place(job.file.folder), job.file.name, *job.thumbnail);
        }
        transaction.Commit();
    }
    for (const FileJobPtr& spJob : m_read)
        Settle(spJob->value);
    m_read.clear();
    m_storeAt = Clock::now() + kBatchTime;
}

void Importer::Finish()
{
    StoreRead();
    m_report.passedLinks = m_walk.PassedLinks();
    RemoveGone();
    m_report.interrupted = m_observer.MustStop();
    m_done = true;
}

void Importer::Settle(const FileJob& item)
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

// Removes what has gone from the catalogue.
void Importer::RemoveGone()
{
    std::uint64_t held = 0;
    {
        Transaction transaction = Begin(Transaction::Kind::Read);
        for (const Part& part : m_parts)
            held += m_files.CountBelow({part.id, part.top});
        transaction.Commit();
    }
    if (held == m_inCatalog)
        return; // what was found is all that there is
    bool removed = false;
    for (const Part& part : m_parts)
        removed = RemoveGone(part) || removed;
    if (!removed)
        return;
    Transaction transaction = Begin(Transaction::Kind::Exclusive);
    for (const Part& part : m_parts)
        m_files.RemoveEmptyFolders({part.id, part.top});
    transaction.Commit();
}

// Asks the file system about every file that the catalogue holds of a volume, page by page. Returns whether any had
// gone.
bool Importer::RemoveGone(const Part& part)
{
    constexpr int kPage = 512;
    bool removed = false;
    long long after = 0;
    while (!m_observer.MustStop())
    {
        Transaction transaction = Begin(Transaction::Kind::Read);
        auto files = m_files.FilesBelow({part.id, part.top}, after, kPage);
        transaction.Commit();
        if (files.empty())
            break;
        after = files.back().id;
        std::erase_if(files, [&part](const StoredFile& file) { return !IsGone(part.volume.mount + file.path); });
        RemoveFiles(files);
        removed = removed || !files.empty();
    }
    return removed;
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

// The catalogue may lie in the folder, with what the engine keeps beside it; looking at it would change it each time.
bool Importer::IsCatalog(const WalkedFile& file) const
{
    const std::string path = file.folder + file.name;
    if (!path.starts_with(m_catalogFile))
        return false;
    const std::string_view rest = std::string_view(path).substr(m_catalogFile.size());
    return rest.empty() || rest == "-journal" || rest == "-wal" || rest == "-shm";
}

Transaction Importer::Begin(Transaction::Kind kind)
{
    const auto waiting = m_observer.BeforeLock(m_report, kind);
    m_files.BeginTransaction();
    return Transaction(m_catalog.GetDatabase(), kind);
}
} // namespace HynHost
