#pragma once

#include "Models/Instant.h"
#include "Models/JSON/Fields.h"

namespace orvia {

/// The message with which a chat widget greets a visitor.
struct WidgetGreeting {
    std::optional<bool> enabled;
    std::optional<qint64> delaySeconds; ///< seconds before the greeting shows
    std::optional<QString> text;

    friend bool operator==(const WidgetGreeting&, const WidgetGreeting&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::optional("enabled", &WidgetGreeting::enabled),
            json::optional("delaySeconds", &WidgetGreeting::delaySeconds),
            json::optional("text", &WidgetGreeting::text),
        };
    }
};

/// The look of a product's chat widget.
struct WidgetConfig {
    std::optional<QString> title;
    std::optional<QString> accentColor; ///< hexadecimal colour text, not validated
    std::optional<QString> position;    ///< "right" or "left"
    std::optional<WidgetGreeting> greeting;

    friend bool operator==(const WidgetConfig&, const WidgetConfig&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::optional("title", &WidgetConfig::title),
            json::optional("accentColor", &WidgetConfig::accentColor),
            json::optional("position", &WidgetConfig::position),
            json::optional("greeting", &WidgetConfig::greeting),
        };
    }
};

/// A site that carries the chat widget.
struct Product {
    QString id;
    QString name;
    QString slug;
    std::optional<QString> publicKey;
    std::optional<WidgetConfig> widget;
    std::optional<Instant> createdAt;

    friend bool operator==(const Product&, const Product&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("_id", &Product::id),        json::required("name", &Product::name),
            json::required("slug", &Product::slug),     json::optional("publicKey", &Product::publicKey),
            json::optional("widget", &Product::widget), json::optional("createdAt", &Product::createdAt),
        };
    }
};

/// A stored reply that agents insert by its shortcut.
struct CannedResponse {
    QString id;
    std::optional<QString> productId; ///< absent means usable for every product
    QString shortcut;
    QString body;
    std::optional<Instant> createdAt;

    friend bool operator==(const CannedResponse&, const CannedResponse&) = default;

    static constexpr auto fields()
    {
        return std::tuple{
            json::required("_id", &CannedResponse::id),
            json::optional("productId", &CannedResponse::productId),
            json::required("shortcut", &CannedResponse::shortcut),
            json::required("body", &CannedResponse::body),
            json::optional("createdAt", &CannedResponse::createdAt),
        };
    }
};

} // namespace orvia
