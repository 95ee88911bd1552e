#pragma once
// One page of the Add Setup wizard: caption "Add Setup Wizard", the page's own controls, and
// "Next" (the default button: Enter moves on) and "Cancel" below them.
// A page gives the focus to what there is to fill; Tab goes down the page, then to the buttons.
#include <QDialog>

class SetupWizard;
class QPushButton;
class QVBoxLayout;

class WizardPage : public QDialog {
    Q_OBJECT
  public:
    enum Buttons { NextAndCancel, NoButtons };
    WizardPage(SetupWizard& wizard, const QString& name, Buttons buttons = NextAndCancel);

    // Called once the page is on screen.
    virtual void shown() {}

  protected:
    // What "Next" does; the base only reaches it through the wizard's unhandled-error rule.
    virtual void next() {}
    // The text at the top of the page.
    void addText(const QString& text);
    QVBoxLayout* content() const { return content_; }
    QPushButton* nextButton() const { return nextButton_; }
    void reject() override; // "Cancel", Escape and the close box: the page goes, nothing else
    void showEvent(QShowEvent* event) override;

    SetupWizard& wizard_;

  private:
    QVBoxLayout* content_;
    QPushButton* nextButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
    bool tabOrderSet_ = false;
};
