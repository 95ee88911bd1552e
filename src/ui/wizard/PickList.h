#pragma once
// The forms' lists. No row is current or picked until the operator picks one: taking the
// keyboard does not mark the first row (it would look picked, and a button acting on "the
// picked row" would then seem to have one); the first arrow key picks the first row.
#include <QListWidget>

class PickList : public QListWidget {
    Q_OBJECT
  public:
    explicit PickList(QWidget* parent = nullptr);

    // Rows never grow wider than the list: a long one is elided in its middle, its whole text
    // being its tooltip, instead of widening the list behind a horizontal scrollbar.
    void fitRowsToWidth();
    // Adds a row; with rows fitted to the width, its text is also its tooltip.
    void addRow(const QString& text);
    // Nothing picked and nothing current.
    void pickNothing();

  protected:
    void focusInEvent(QFocusEvent* event) override;

  private:
    bool fitted_ = false;
};
