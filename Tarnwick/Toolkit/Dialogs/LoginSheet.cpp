#include "Tarnwick/Toolkit/Dialogs/LoginSheet.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tw {

namespace {

using Kind = LoginQuestion::Kind;

/// Longer than any password or code; the askpass program takes no longer line.
constexpr int mostCharacters = 1000;

QString titleOf(LoginQuestion const &question)
{
    auto const *title = "Log in to %@";
    if (question.kind == Kind::hostKey)
        title = "Unknown key of %@";
    else if (question.kind == Kind::archive)
        title = "Password of %@";
    return Wording::shown(Text(title, {withNothingHidden(question.host)}));
}

/// Of the question about a host key, the last line asks for a word to be typed, for which there are buttons.
QString messageOf(LoginQuestion const &question)
{
    auto words = question.prompt;
    if (question.kind == Kind::hostKey) {
        if (auto const last = words.rfind("\nAre you sure you want to continue connecting"); last != std::string::npos)
            words.resize(last);
    }
    return QString::fromStdString(words);
}

} // namespace

LoginSheet::LoginSheet(LoginQuestion const &question, QWidget *window)
    : Sheet(titleOf(question), messageOf(question), window,
            question.kind == Kind::hostKey ? std::optional(QStyle::SP_MessageBoxWarning) : std::nullopt)
{
    switch (question.kind) {
    case Kind::password:
    case Kind::passphrase:
    case Kind::archive:
    case Kind::other:
        addField(question);
        break;
    case Kind::hostKey:
        addFingerprint(question);
        addChoice("Accept Key", nullptr);
        break;
    case Kind::confirm:
        addChoice("Yes", "No");
        break;
    case Kind::notice:
        buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
        break;
    }
}

void LoginSheet::addField(LoginQuestion const &question)
{
    if (question.attempt > 1) {
        auto *const refused =
            new QLabel(QStringLiteral("⚠︎ ") + Wording::shown("That was not accepted. Try again."), this);
        refused->setTextFormat(Qt::PlainText);
        addContent(refused);
    }
    field = new QLineEdit(this);
    field->setEchoMode(QLineEdit::Password);
    field->setMaxLength(mostCharacters);
    field->setAccessibleName(messageOf(question));
    addContent(field);
    auto *const show = new QCheckBox(Wording::shown("Show"), this);
    connect(show, &QCheckBox::toggled, field,
            [this](bool isShown) { field->setEchoMode(isShown ? QLineEdit::Normal : QLineEdit::Password); });
    addContent(show);
    if (question.canBeRemembered) {
        remember = new QCheckBox(Wording::shown("Remember in the key store"), this);
        addContent(remember);
    }
    auto const *const okTitle = question.kind == Kind::archive ? "Unlock" : "Log In";
    auto *const ok = buttons().addButton(Wording::shown(okTitle), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    // An empty answer would be sent to the host as an attempt.
    ok->setEnabled(false);
    connect(field, &QLineEdit::textChanged, ok, [ok](QString const &text) { ok->setEnabled(!text.isEmpty()); });
    buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    field->setFocus();
}

void LoginSheet::addFingerprint(LoginQuestion const &question)
{
    if (question.fingerprint.empty())
        return;
    auto *const fingerprint = new QLabel(QString::fromStdString(question.fingerprint), this);
    fingerprint->setObjectName(QStringLiteral("fingerprint"));
    fingerprint->setTextFormat(Qt::PlainText);
    fingerprint->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    fingerprint->setTextInteractionFlags(Qt::TextSelectableByMouse);
    addContent(fingerprint);
}

/// Return answers with the harmless button, also from the other one: what is accepted is chosen by its name.
void LoginSheet::addChoice(char const *yes, char const *no)
{
    auto *const accepting = buttons().addButton(Wording::shown(yes), QDialogButtonBox::ActionRole);
    accepting->setAutoDefault(false);
    connect(accepting, &QPushButton::clicked, this, [this] {
        choice = "yes";
        accept();
    });
    auto *usual = buttons().addButton(Wording::shown("Cancel"), QDialogButtonBox::RejectRole);
    if (no) {
        usual = buttons().addButton(Wording::shown(no), QDialogButtonBox::ActionRole);
        connect(usual, &QPushButton::clicked, this, [this] {
            choice = "no";
            accept();
        });
    }
    usual->setDefault(true);
    usual->setFocus();
}

LoginAnswer LoginSheet::answer() const
{
    if (!field)
        return {.text = SecretText(choice)};
    auto bytes = field->text().toUtf8();
    LoginAnswer given{.text = SecretText({bytes.constData(), static_cast<std::size_t>(bytes.size())}),
                      .remember = remember && remember->isChecked()};
    bytes.fill('\0');
    return given;
}

void LoginSheet::accept()
{
    if (!field || !field->text().isEmpty())
        Sheet::accept();
}

} // namespace tw
