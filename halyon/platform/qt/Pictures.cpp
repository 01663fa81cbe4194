// Picture files, through the toolkit's readers.

#include "Pictures.h"

#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Application.h"

namespace Halyon
{
namespace
{
// A descriptor, or -1. The path's bytes need not be valid text, so the toolkit is not asked to open it; a pipe would
// block.
int OpenPlainFile(const char* pszPath)
{
    const int nFile = open(pszPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct stat status = {};
    if (nFile < 0 || (fstat(nFile, &status) == 0 && S_ISREG(status.st_mode)))
        return nFile;
    close(nFile);
    return -1;
}
} // namespace

bool IsDrawing(const QImageReader& reader)
{
    return reader.format().startsWith("svg");
}

OSStatus PictureFile::Open(const FSRef* pRef)
{
    char szPath[sizeof(FSRef::szPath)];
    if (pRef == nullptr)
        return paramErr;
    if (const OSStatus status = FSRefMakePath(pRef, szPath, sizeof(szPath)); status != noErr)
        return status;
    const int nFile = OpenPlainFile(szPath);
    if (nFile < 0)
        return fnfErr;
    if (!m_file.open(nFile, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return fnfErr;
    reader.setDevice(&m_file);
    if (!reader.canRead())
    {
        // A few formats do not show what they are.
        reader.setFormat(QFileInfo(QString::fromUtf8(szPath)).suffix().toLatin1().toLower());
        if (!reader.canRead())
            return paramErr;
    }
    return !IsDrawing(reader) || HasScreen() ? noErr : paramErr;
}
} // namespace Halyon
