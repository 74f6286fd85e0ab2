// The least that a program with a window of Qt Widgets does before there is something to see: what of the start is not
// ours to shorten.

#include <QApplication>
#include <QWidget>

#include <cstdio>

namespace {

class BareWindow final : public QWidget {
    void paintEvent(QPaintEvent * /*event*/) override
    {
        std::fputs("painted\n", stderr);
        std::fflush(stderr);
    }
};

} // namespace

int main(int argc, char **argv)
{
    QApplication const application(argc, argv);
    BareWindow window;
    window.resize(1180, 720);
    window.show();
    return QApplication::exec();
}
