#pragma once

// Makes a folder and the files in it unwritable for this process, also when it runs as root
// (which ignores mode bits): then the folder gets the immutable attribute. Undone on destruction.

#include <QString>

namespace corvane::test {

class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(QString path);
    ~ReadOnlyFolder();
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

    // False when the folder could not be made unwritable (say why with reason()).
    bool isReadOnly() const { return m_readOnly; }
    QString reason() const { return m_reason; }

private:
    QString m_path;
    bool m_immutable = false;
    bool m_readOnly = false;
    QString m_reason;
};

} // namespace corvane::test
