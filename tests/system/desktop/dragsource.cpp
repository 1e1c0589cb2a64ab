// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QDrag>
#include <QFileInfo>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>

namespace
{
/// A window from which a file can be dragged, as from a file manager's.
class DragSource : public QWidget
{
public:
    explicit DragSource(const QString &path) : m_path(path)
    {
        setWindowTitle(QStringLiteral("Drag source"));
        setFixedSize(120, 80);
    }

protected:
    void mouseMoveEvent(QMouseEvent *event) override
    {
        if (!(event->buttons() & Qt::LeftButton))
            return;
        auto *file = new QMimeData;
        file->setUrls({QUrl::fromLocalFile(m_path)});
        auto *drag = new QDrag(this);
        drag->setMimeData(file);
        drag->exec(Qt::CopyAction);
        hide();
    }

private:
    QString m_path;
};
}

/// drag-source FILE: a small window that goes when FILE has been dragged out of it. The program stays until it is ended, since
/// whoever got the file asks for its name only then.
int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    DragSource source(QFileInfo(QCoreApplication::arguments().value(1)).absoluteFilePath());
    source.show();
    return QApplication::exec();
}
