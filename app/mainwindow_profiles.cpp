// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/messagebox.h"
#include "base/debuglog.h"
#include "persist/profilestore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QInputDialog>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTextDocument>
#include <QVBoxLayout>

namespace
{
constexpr int messageTime = 2000; // milliseconds

ProfileSettings currentSettings()
{
    return {currentROM.autoloadProfile, currentROM.autosave};
}

/// A label for a name that comes from a file: shown as it is, to be selected and copied, and never wider than the panel.
QLabel *createValueLabel(QWidget *parent, const QString &objectName)
{
    auto *label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

QComboBox *createProfileBox(QWidget *parent, const QString &objectName)
{
    auto *box = new QComboBox(parent);
    box->setObjectName(objectName);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return box;
}

/// The notice has its room from the start, so that the buttons below it never jump.
void keepSizeWhenHidden(QWidget *widget)
{
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

/// \a text for a place that would take what looks like rich text for it, such as a folder's name.
QString asPlainText(const QString &text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

/// Why a list behind \a link is neither read nor written; empty without a link.
QString reasonOfLink(const QString &link)
{
    return link.isEmpty() ? QString() : MainWindow::tr("%1 is a link that leads out of the profiles folder.").arg(link);
}

/// The caption of \a field, also for a screen reader.
QLabel *createCaption(const QString &text, QWidget *field)
{
    auto *caption = new QLabel(text, field->parentWidget());
    caption->setObjectName(field->objectName() + QLatin1String("Caption"));
    caption->setBuddy(field);
    QString accessibleName = text;
    accessibleName.chop(1); // the colon
    field->setAccessibleName(accessibleName);
    return caption;
}
}

ProfileStore MainWindow::profileStore() const
{
    return ProfileStore(m_profilesFolder, currentROM.romID);
}

void MainWindow::createProfilePanel()
{
    m_profilePanel = new QWidget(this);
    m_profilePanel->setObjectName(QStringLiteral("profilePanel"));
    auto *layout = new QVBoxLayout(m_profilePanel);
    QMargins margins = layout->contentsMargins(); // Little above and below: the smallest window is as low as it can be.
    margins.setTop(margins.top() / 2);
    margins.setBottom(margins.bottom() / 2);
    layout->setContentsMargins(margins);
    layout->addWidget(createGlobalSettingsBox());
    layout->addWidget(createProfileSettingsBox());
    layout->addStretch();
}

QGroupBox *MainWindow::createGlobalSettingsBox()
{
    auto *box = new QGroupBox(tr("Global Settings"), m_profilePanel);
    box->setObjectName(QStringLiteral("globalSettingsBox"));
    m_romIDLabel = createValueLabel(box, QStringLiteral("romID"));
    m_autoloadProfileBox = createProfileBox(box, QStringLiteral("autoloadProfile"));
    m_autosaveBox = new QCheckBox(box);
    m_autosaveBox->setObjectName(QStringLiteral("autosave"));

    auto *grid = new QGridLayout(box);
    grid->setColumnStretch(1, 1);
    QLabel *romIDCaption = createCaption(tr("ID:"), m_romIDLabel);
    romIDCaption->setToolTip(asPlainText(describe(m_profilesFolder)));
    m_romIDLabel->setToolTip(romIDCaption->toolTip());
    grid->addWidget(romIDCaption, 0, 0);
    grid->addWidget(m_romIDLabel, 0, 1);
    grid->addWidget(createCaption(tr("Autoload Profile:"), m_autoloadProfileBox), 1, 0);
    grid->addWidget(m_autoloadProfileBox, 1, 1);
    QLabel *autosaveCaption = createCaption(tr("Auto Save:"), m_autosaveBox);
    autosaveCaption->setToolTip(
        tr("When enabled, the profile will be saved when you Open a file, Save the file, or close the program."));
    grid->addWidget(autosaveCaption, 2, 0);
    grid->addWidget(m_autosaveBox, 2, 1);

    connect(m_autoloadProfileBox, SIGNAL(activated(QString)), this, SLOT(setAutoloadProfile(QString)));
    connect(m_autosaveBox, &QCheckBox::stateChanged, this, &MainWindow::setAutosaveProfile);
    return box;
}

QGroupBox *MainWindow::createProfileSettingsBox()
{
    auto *box = new QGroupBox(tr("Profile Settings"), m_profilePanel);
    box->setObjectName(QStringLiteral("profileSettingsBox"));
    m_currentProfileLabel = createValueLabel(box, QStringLiteral("currentProfile"));
    m_profileBox = createProfileBox(box, QStringLiteral("profile"));
    m_unsavedFileListLabel = new QLabel(tr("There are unsaved changes in the file list."), box);
    m_unsavedFileListLabel->setObjectName(QStringLiteral("unsavedFileList"));
    keepSizeWhenHidden(m_unsavedFileListLabel);
    m_unsavedFileListLabel->hide();

    constexpr int columns = 4;
    auto *grid = new QGridLayout(box);
    grid->addWidget(createCaption(tr("Current Profile:"), m_currentProfileLabel), 0, 0);
    grid->addWidget(m_currentProfileLabel, 0, 1, 1, columns - 1);
    grid->addWidget(createCaption(tr("Profile:"), m_profileBox), 1, 0);
    grid->addWidget(m_profileBox, 1, 1, 1, columns - 1);
    grid->addWidget(m_unsavedFileListLabel, 2, 0, 1, columns);

    int column = 0;
    const auto addButton = [&](const QString &text, const QString &objectName, void (MainWindow::*slot)()) {
        auto *button = new QPushButton(text, box);
        button->setObjectName(objectName);
        connect(button, &QPushButton::clicked, this, slot);
        grid->addWidget(button, 3, column++);
    };
    addButton(tr("Save"), QStringLiteral("saveProfile"), &MainWindow::saveProfile);
    addButton(tr("Load"), QStringLiteral("loadProfile"), &MainWindow::loadProfile);
    addButton(tr("New"), QStringLiteral("newProfile"), &MainWindow::newProfile);
    addButton(tr("Delete"), QStringLiteral("deleteProfile"), &MainWindow::deleteProfile);
    return box;
}

void MainWindow::readProfiles()
{
    const ProfileStore store = profileStore();
    currentROM.profileListUpdating = true;
    m_romIDLabel->setText(currentROM.romID);
    store.createCartridgeFolder();
    if (!store.hasSettings()) {
        QUILLARY_DEBUG_AS("void MainWindow::readProfiles()") << "settings does not exist";
        const ProfileSettings defaults;
        currentROM.autoloadProfile = defaults.autoload;
        currentROM.autosave = defaults.autosave;
        saveProfileSettings();
    }
    readProfileSettings();
    replaceUnusableAutoloadProfile();
    currentROM.profileName = currentROM.autoloadProfile;
    store.createProfile(currentROM.profileName);

    m_currentProfileLabel->setText(currentROM.profileName);
    m_autoloadProfileBox->clear();
    m_profileBox->clear();
    const QStringList profiles = store.profiles();
    m_autoloadProfileBox->addItems(profiles);
    m_profileBox->addItems(profiles);
    const int current = profiles.indexOf(currentROM.profileName);
    if (current >= 0) {
        m_profileBox->setCurrentIndex(current);
        m_autoloadProfileBox->setCurrentIndex(current);
    }
    m_autosaveBox->setChecked(currentROM.autosave);
    currentROM.profileListUpdating = false;
}

/// The settings file may name anything: an empty name stands for the default profile, and so does, after a message, one that
/// would lead out of the cartridge's folder.
void MainWindow::replaceUnusableAutoloadProfile()
{
    QString &name = currentROM.autoloadProfile;
    if (ProfileStore::isSafeName(name))
        return;
    if (!name.isEmpty())
        showBox(this, QMessageBox::Critical, QStringLiteral("parseXML"),
                tr("Couldn't open %1").arg(profileStore().fileListPath(name)));
    name = ProfileSettings().autoload;
}

void MainWindow::readProfileSettings()
{
    const ProfileStore store = profileStore();
    ProfileSettings settings;
    QString error;
    const ProfileStore::Reading outcome = store.readSettings(&settings, &error);
    currentROM.autoloadProfile = settings.autoload;
    currentROM.autosave = settings.autosave;
    if (outcome == ProfileStore::Reading::NotOpened)
        showBox(this, QMessageBox::Critical, QStringLiteral("readProfileSettings"),
                tr("Couldn't open %1").arg(store.settingsPath()));
    else if (outcome == ProfileStore::Reading::Malformed)
        showBox(this, QMessageBox::Critical, QStringLiteral("XMLReader::parseXML"), error);
}

void MainWindow::saveProfileSettings()
{
    const ProfileStore store = profileStore();
    QString error;
    bool opened = false;
    if (store.writeSettings(currentSettings(), &error, &opened))
        return;
    if (opened)
        QUILLARY_DEBUG_AS("void MainWindow::saveProfileSettings()") << "error";
    qDebug().noquote() << store.settingsPath() + QLatin1Char(':') << error;
    showBox(this, QMessageBox::Critical, QStringLiteral("saveProfileSettings"), tr("Couldn't open %1").arg(store.settingsPath()));
}

void MainWindow::setAutoloadProfile(QString name)
{
    if (currentROM.profileListUpdating)
        return;
    currentROM.autoloadProfile = name;
    saveProfileSettings();
}

void MainWindow::setAutosaveProfile(int enable)
{
    if (currentROM.profileListUpdating)
        return;
    currentROM.autosave = enable > 0;
    saveProfileSettings();
}

void MainWindow::showUnsavedFileListNotice()
{
    m_unsavedFileListLabel->show();
}

/// The name in the "Profile:" box; the current profile where the box lists none, because its folder cannot be made.
QString MainWindow::selectedProfile() const
{
    return m_profileBox->count() > 0 ? m_profileBox->currentText() : currentROM.profileName;
}

bool MainWindow::writeFileListOf(const QString &profile)
{
    const ProfileStore store = profileStore();
    if (store.isSafe(profile))
        return writeFileListTo(store.fileListPath(profile));
    showUnwritableList(store.fileListPath(profile), reasonOfLink(store.linkToFileList(profile)));
    return false;
}

bool MainWindow::saveFileListOfOpenImage()
{
    // The table is still that of the image before, whose list has been written. The session may end while a box shows.
    if (m_isTableOfOtherImage)
        return true;
    if (!writeFileListOf(currentROM.profileName))
        return false;
    m_unsavedFileListLabel->hide();
    return true;
}

bool MainWindow::mayReplaceFileTable()
{
    if (m_unsavedFileListLabel->isHidden())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Application"), tr("There are unsaved changes.\nWhat do you want to do?"),
                    QMessageBox::NoButton, this);
    QPushButton *saveAndLoad = box.addButton(tr("Save and Load"), QMessageBox::ActionRole);
    QPushButton *load = box.addButton(tr("Load"), QMessageBox::ActionRole);
    box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(saveAndLoad);
    showTextAsItIs(&box);
    box.exec();
    if (box.clickedButton() == saveAndLoad)
        return saveFileListOfOpenImage();
    if (box.clickedButton() != load)
        return false;
    m_unsavedFileListLabel->hide();
    return true;
}

void MainWindow::loadProfile()
{
    const QString name = selectedProfile();
    if (!mayReplaceFileTable())
        return;
    currentROM.profileName = name;
    m_currentProfileLabel->setText(name);
    clearFileTable();
    m_isTableOfOtherImage = false;
    const ProfileStore store = profileStore();
    const QString link = store.linkToFileList(name);
    if (!link.isEmpty())
        showBoxWithReason(QStringLiteral("parseXML"), tr("Couldn't open %1").arg(store.fileListPath(name)), reasonOfLink(link));
    else if (store.hasFileList(name))
        parseXML(store.fileListToRead(name));
    statusBar()->showMessage(tr("Profile loaded."), messageTime);
}

void MainWindow::saveProfile()
{
    const QString name = selectedProfile();
    if (name != currentROM.profileName) {
        const QString question =
            tr("You are about to save %1 over %2.\nWhat do you want to do?").arg(currentROM.profileName, name);
        if (showBox(this, QMessageBox::Warning, tr("Application"), question, QMessageBox::Save | QMessageBox::Cancel,
                    QMessageBox::Cancel)
            != QMessageBox::Save)
            return;
    }
    // The table goes on belonging to the old profile when it cannot be written to the new one.
    if (!writeFileListOf(name))
        return;
    currentROM.profileName = name;
    m_currentProfileLabel->setText(name);
    m_unsavedFileListLabel->hide();
    statusBar()->showMessage(tr("Profile saved."), messageTime);
}

void MainWindow::newProfile()
{
    static const QRegularExpression allowed(QStringLiteral("^[^/:*?<>\\|]*$"));
    bool accepted = false;
    const QString name = QInputDialog::getText(this, tr("Create new profile"), tr("Profile Name:"), QLineEdit::Normal,
                                               QStringLiteral("New Profile"), &accepted);
    if (!accepted || name.isEmpty())
        return;
    const auto refuse = [this](const QString &reason) { showBox(this, QMessageBox::Critical, tr("Application"), reason); };
    if (!allowed.match(name).hasMatch() || name.contains(QChar(QChar::Null)))
        return refuse(tr("The name included invalid file name characters."));
    const ProfileStore store = profileStore();
    const bool isDots = !ProfileStore::isSafeName(name); // "." and "..", which exist in every folder.
    if (isDots || store.hasProfile(name))
        return refuse(tr("A profile with that name already exists."));
    if (!store.createProfile(name))
        return refuse(tr("Couldn't create %1").arg(store.profileFolder(name)));
    m_autoloadProfileBox->addItem(name);
    m_profileBox->addItem(name);
    m_profileBox->setCurrentIndex(m_profileBox->count() - 1);
    statusBar()->showMessage(tr("Profile created."), messageTime);
}

void MainWindow::deleteProfile()
{
    const int index = m_profileBox->currentIndex();
    if (index < 0)
        return;
    const QString name = m_profileBox->currentText();
    const auto refuse = [this](const QString &reason) { showBox(this, QMessageBox::Critical, tr("Application"), reason); };
    // Only the selected name is lower-cased: an autoload profile with capitals in its name is not protected.
    if (name.toLower() == currentROM.autoloadProfile)
        return refuse(tr("You can not delete the autoload profile."));
    if (name == currentROM.profileName)
        return refuse(tr("You can not delete a profile that is currently loaded."));
    const QString question = tr("You are about to delete %1.\n"
                                "This will delete the profile and all of its files permanently.\n"
                                "Do you want to continue?")
                                 .arg(name);
    if (showBox(this, QMessageBox::Warning, tr("Application"), question, QMessageBox::Yes | QMessageBox::Cancel,
                QMessageBox::Cancel)
        != QMessageBox::Yes)
        return;
    const ProfileStore store = profileStore();
    if (!store.removeProfile(name))
        return refuse(tr("Couldn't delete %1").arg(store.profileFolder(name)));
    m_autoloadProfileBox->removeItem(index);
    m_profileBox->removeItem(index);
    statusBar()->showMessage(tr("Profile deleted."), messageTime);
}
