// Opening picture files. Inside the platform only.
#pragma once

#include <QFile>
#include <QImageReader>

#include <halyon/platform/Interface.h>

namespace Halyon
{
// A picture file, open, with a reader for what it holds, whatever its name says.
class PictureFile
{
public:
    // fnfErr: no such item, or not a plain file. paramErr: no picture that this thread can read.
    OSStatus Open(const FSRef* pRef);

    QImageReader reader;

private:
    QFile m_file;
};

// A format without pixels of its own: it needs fonts, and so an application object.
bool IsDrawing(const QImageReader& reader);
} // namespace Halyon
