// ModelWatch.h: a fatal model tester for the five tree models. Header only.
//
// The tree models answer for any column of a row how many rows stand below it, while indexes below
// it are made under column 0 only. The editors rely on that; the tester takes it for an error. So
// it watches through a proxy that shows rows below column 0 alone and passes everything else on.
#ifndef ORVO_TESTS_MODELS_MODELWATCH_H
#define ORVO_TESTS_MODELS_MODELWATCH_H

#include <QAbstractItemModelTester>
#include <QIdentityProxyModel>

/// Make it before the model is filled, and end it before the model.
class ModelWatch : private QIdentityProxyModel {
public:
    explicit ModelWatch(QAbstractItemModel* model) { setSourceModel(model); }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.column() > 0 ? 0 : QIdentityProxyModel::rowCount(parent);
    }
    bool hasChildren(const QModelIndex& parent = {}) const override {
        return parent.column() <= 0 && QIdentityProxyModel::hasChildren(parent);
    }

private:
    QAbstractItemModelTester m_tester{this, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

#endif
