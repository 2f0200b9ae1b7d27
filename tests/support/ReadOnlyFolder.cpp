#include "ReadOnlyFolder.h"

#include "SessionTools.h"

#include <QDir>
#include <QFile>
#include <unistd.h>

namespace corvane::test {

ReadOnlyFolder::ReadOnlyFolder(QString path) : m_path(std::move(path))
{
    const QDir dir(m_path);
    for (const QString& name : dir.entryList(QDir::Files))
        QFile::setPermissions(dir.filePath(name),
                              QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    QFile::setPermissions(m_path,
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup);
    if (geteuid() == 0) {
        m_immutable = output("chattr", {"+i", m_path}).succeeded;
        if (!m_immutable)
            m_reason = "running as root and chattr +i failed on " + m_path;
    }
    // Check for real: can a file be created in the folder?
    QFile probe(dir.filePath(".probe"));
    m_readOnly = !probe.open(QIODevice::WriteOnly);
    if (!m_readOnly) {
        probe.close();
        probe.remove();
        if (m_reason.isEmpty())
            m_reason = "the folder stayed writable: " + m_path;
    }
}

ReadOnlyFolder::~ReadOnlyFolder()
{
    if (m_immutable)
        output("chattr", {"-i", m_path});
    QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QDir dir(m_path);
    for (const QString& name : dir.entryList(QDir::Files))
        QFile::setPermissions(dir.filePath(name), QFile::ReadOwner | QFile::WriteOwner);
}

} // namespace corvane::test
