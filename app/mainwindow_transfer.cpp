// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/messagebox.h"
#include "app/waitcursor.h"
#include "base/progress.h"
#include "transfer/extraction.h"
#include "transfer/folderimport.h"
#include "transfer/replacement.h"
#include "transfer/texturepack.h"
#include "transfer/texturewriter.h"

#include <QApplication>
#include <QDebug>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QStatusBar>

#include <memory>

namespace
{
constexpr int messageMilliseconds = 2000;

QString fileDialogPathKey()
{
    return QStringLiteral("fileDialogPath");
}

/// Shows what work has to say: status messages in a window's status bar, debug lines in the log as a member function's own.
class WindowLog : public WorkLog
{
public:
    /// \a function is the signature that the lines' context names.
    WindowLog(const QMainWindow *window, const char *function) : m_statusBar(window->statusBar()), m_function(function) { }

    void debug(const QString &line) override { QMessageLogger(__FILE__, __LINE__, m_function).debug().noquote() << line; }
    void status(const QString &text, int milliseconds) override { m_statusBar->showMessage(text, milliseconds); }
    void warning(const QString &text) override { QMessageLogger(__FILE__, __LINE__, m_function).warning().noquote() << text; }
    void notImported(const QString &text) override { warning(text); }

private:
    QStatusBar *m_statusBar;
    const char *m_function;
};

/// Moves a progress dialog on from the value it has; there may be no dialog.
class DialogProgress : public Progress
{
public:
    explicit DialogProgress(QProgressDialog *dialog) : m_dialog(dialog), m_start(dialog ? dialog->value() : 0) { }

    void setValue(int value) override
    {
        if (m_dialog)
            m_dialog->setValue(m_start + value);
    }

private:
    QProgressDialog *m_dialog;
    int m_start;
};

QString chooseDirectory(QWidget *parent, const QSettings &settings, QFileDialog::Options options)
{
    return QFileDialog::getExistingDirectory(parent, MainWindow::tr("Select Directory"),
                                             settings.value(fileDialogPathKey()).toString(), options | QFileDialog::ShowDirsOnly);
}

/// Makes the file dialogs start in \a folder, an absolute path, next time.
void rememberFolder(QSettings *settings, const QString &folder)
{
    settings->setValue(fileDialogPathKey(), folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/'));
}

SizeAnswer askHowToResize(const QSize &picture, const QSize &texture)
{
    QMessageBox box;
    box.addButton(QMessageBox::Abort);
    const QAbstractButton *keep = box.addButton(MainWindow::tr("Keep Aspect Ratio"), QMessageBox::ActionRole);
    const QAbstractButton *ignore = box.addButton(MainWindow::tr("Ignore Aspect Ratio"), QMessageBox::ActionRole);
    box.setText(MainWindow::tr("The provided image is %1x%2 while the texture is %3x%4.\r\n"
                               "The image must be resized before it can be imported.")
                    .arg(picture.width())
                    .arg(picture.height())
                    .arg(texture.width())
                    .arg(texture.height()));
    box.setInformativeText(MainWindow::tr("What do you want to do?"));
    box.exec();
    if (box.clickedButton() == keep)
        return SizeAnswer::KeepAspectRatio;
    return box.clickedButton() == ignore ? SizeAnswer::IgnoreAspectRatio : SizeAnswer::Abort;
}

/// The sink that writes through \a window, which so becomes modified and shows what went wrong.
TextureSink importInto(MainWindow *window)
{
    return [window](const QImage &picture, int address, const QString &format, const QByteArray &rawPicture) {
        window->importTexture(picture, address, format, rawPicture);
    };
}

QString pictureFilter(const QString &label, const QString &extension)
{
    return label + QLatin1String(" (*") + extension + QLatin1Char(')');
}
}

void MainWindow::importTexture(QImage image, int address, QString format, QByteArray rawImage)
{
    WindowLog log(this, Q_FUNC_INFO);
    if (writeTexture(&currentROM, image, address, format, rawImage, &log) == WriteOutcome::Written)
        setWindowModified(true);
}

void MainWindow::replaceTexture()
{
    const fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!texture) {
        statusBar()->showMessage(tr("You must select a texture in the list to import over"), messageMilliseconds);
        return;
    }
    if (!texture->exists()) {
        statusBar()->showMessage(tr("The selected texture is missing data"), messageMilliseconds);
        return;
    }
    if (!textureFormats::find(texture->format)) {
        showBox(this, QMessageBox::Warning, tr("Quillary"),
                tr("Texture format %1 is not supported, can't import texture.").arg(texture->format));
        statusBar()->showMessage(tr("Texture format %1 is not supported, can't import texture").arg(texture->format),
                                 messageMilliseconds);
        return;
    }
    const QString fileName =
        QFileDialog::getOpenFileName(this, tr("Choose texture"), m_settings.value(fileDialogPathKey()).toString(),
                                     pictureFilter(tr("Image"), pictureExtension(texture->format)), nullptr, m_fileDialogOptions);
    insertTexture(fileName, currentROM.lastSelectedTexture);
}

void MainWindow::insertTexture(QString fileName, fileTreeFile *texture)
{
    if (fileName.isEmpty()) {
        statusBar()->showMessage(tr("Could not import texture"), messageMilliseconds);
        return;
    }
    if (!texture) {
        statusBar()->showMessage(tr("You must select a texture in the list to import over"), messageMilliseconds);
        return;
    }
    rememberFolder(&m_settings, QFileInfo(fileName).absolutePath());
    WindowLog log(this, Q_FUNC_INFO);
    if (::replaceTexture(*texture, fileName, askHowToResize, importInto(this), &log) == ReplaceOutcome::Aborted)
        return;
    statusBar()->showMessage(tr("Texture imported"), messageMilliseconds);
    if (texture == currentROM.lastSelectedTexture)
        renderTexture();
    const QList<fileTreeFile *> touching = touchingTextures(currentROM.root, *texture);
    for (fileTreeFile *file : touching) {
        updateTextureInTree(file);
        qDebug() << "Texture" << file->path() + file->name << "was inside range. updating.";
    }
}

void MainWindow::saveTexture()
{
    const fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (currentROM.selectedType == TextureSelected && texture)
        saveSelectedTexture();
    else
        saveSelectedFolder();
}

void MainWindow::saveSelectedTexture()
{
    fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!textureFormats::find(texture->format)) {
        statusBar()->showMessage(tr("Texture format %1 is not supported, can't extract texture").arg(texture->format),
                                 messageMilliseconds);
        return;
    }
    const QString extension = pictureExtension(texture->format);
    const QString proposed = m_settings.value(fileDialogPathKey()).toString() + texture->name + extension;
    const QString fileName = QFileDialog::getSaveFileName(this, tr("Save File"), proposed, pictureFilter(tr("Images"), extension),
                                                          nullptr, m_fileDialogOptions);
    if (fileName.isEmpty())
        return;
    rememberFolder(&m_settings, QFileInfo(fileName).absolutePath());
    if (extractTexture(texture, fileName))
        statusBar()->showMessage(tr("Texture extracted"), messageMilliseconds);
    else
        statusBar()->showMessage(tr("Could not extract texture (unsupported format or missing data)"), messageMilliseconds);
}

void MainWindow::saveSelectedFolder()
{
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder) {
        statusBar()->showMessage(tr("You must select a folder or a texture in the list to extract"), messageMilliseconds);
        return;
    }
    const QString chosen = chooseDirectory(this, m_settings, m_fileDialogOptions);
    if (chosen.isEmpty())
        return;
    rememberFolder(&m_settings, QFileInfo(chosen).absoluteFilePath());
    saveFolder(chosen, folder);
    statusBar()->showMessage(tr("Folder extracted"), messageMilliseconds);
}

bool MainWindow::extractTexture(fileTreeFile *file, QString fileName)
{
    if (!file)
        return false;
    WindowLog log(this, Q_FUNC_INFO);
    QString error;
    const ExtractOutcome outcome = ::extractTexture(*file, fileName, &log, &error);
    if (outcome == ExtractOutcome::NotWritten)
        log.debug(fileName + QLatin1String(": ") + error);
    return outcome == ExtractOutcome::Extracted || outcome == ExtractOutcome::NotWritten;
}

void MainWindow::saveFolder(QString path, fileTreeDirectory *directory)
{
    if (!directory)
        return;
    const WaitCursor waitCursor;
    WindowLog log(this, "bool MainWindow::extractTexture(fileTreeFile*, QString)");
    extractFolder(path, directory, &log);
}

void MainWindow::importFolder()
{
    const QString chosen = chooseDirectory(this, m_settings, m_fileDialogOptions);
    if (chosen.isEmpty())
        return;
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    QString report;
    {
        const WaitCursor waitCursor;
        const BusyScope busy(this);
        rememberFolder(&m_settings, QFileInfo(chosen).absoluteFilePath());
        qDebug() << QFileInfo(chosen).fileName();
        const int count = countFiles(chosen);
        qDebug() << count;
        const std::unique_ptr<QProgressDialog> progress(createProgressDialog(tr("Importing textures"), QString(), count));
        iterateFolder(chosen, folder, progress.get(), &report);
        closeProgress(progress.get());
    }
    QMessageBox box;
    box.setText(tr("%1 has been imported into %2").arg(chosen, folder ? folder->path() + folder->name : QString()));
    box.setDetailedText(report);
    showTextAsItIs(&box);
    box.exec();
}

int MainWindow::countFiles(const QString &path)
{
    return countFilesBelow(path);
}

void MainWindow::iterateFolder(QString path, fileTreeDirectory *directory, QProgressDialog *progress, QString *log)
{
    WindowLog windowLog(this, Q_FUNC_INFO);
    DialogProgress dialogProgress(progress);
    QString unread;
    importPictureFolder(path, directory, importInto(this), &dialogProgress, &windowLog, log ? log : &unread);
}

void MainWindow::importTexturePack()
{
    const QString chosen = chooseDirectory(this, m_settings, m_fileDialogOptions);
    if (chosen.isEmpty())
        return;
    rememberFolder(&m_settings, QFileInfo(chosen).absoluteFilePath());
    parseTexturePack(chosen);
}

void MainWindow::parseTexturePack(QString archive)
{
    const WaitCursor waitCursor;
    WindowLog log(this, Q_FUNC_INFO);
    const TexturePackImport added = importPack(archive, currentROM.root, currentROM.data, importInto(this), &log);
    if (!added.lastFolder)
        return;
    // The panel and the actions go on to the pack's folder: what is edited, saved or deleted next is that one.
    currentROM.lastSelectedFolder = added.lastFolder;
    clearHighlight();
    updateDirectoryInfo();
    enableActions();
    showUnsavedFileListNotice();
}
