// SPDX-License-Identifier: Apache-2.0

// A GTK application with a window. Nothing in it knows that there is a main queue.

#include "tests/hosts/Scenario.h"

#include <gtk/gtk.h>

namespace {

struct Application {
    GtkApplication* const application =
        gtk_application_new("org.example.VorlanFoundation.GtkHost", G_APPLICATION_NON_UNIQUE);
    GtkWidget* canvas = nullptr;
    hosts::Scenario scenario{{.name = "gtk",
                              .refresh = [this] { gtk_widget_queue_draw(canvas); },
                              .finish = [this] { g_application_quit(G_APPLICATION(application)); }}};

    Application() = default;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application() { g_object_unref(application); }
};

bool isOnScreen(GtkWidget* widget) {
    return gtk_widget_get_mapped(widget) &&
           gdk_surface_get_mapped(gtk_native_get_surface(gtk_widget_get_native(widget)));
}

void draw(GtkDrawingArea* canvas, cairo_t* cairo, int, int, gpointer self) {
    cairo_set_source_rgb(cairo, 0.2, 0.4, 0.6);
    cairo_paint(cairo);
    if (isOnScreen(GTK_WIDGET(canvas))) static_cast<Application*>(self)->scenario.refreshed();
}

void activate(GtkApplication* application, gpointer self) {
    auto& host = *static_cast<Application*>(self);
    host.canvas = gtk_drawing_area_new();
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(host.canvas), draw, self, nullptr);
    auto* window = gtk_application_window_new(application);
    gtk_window_set_default_size(GTK_WINDOW(window), 320, 200);
    gtk_window_set_child(GTK_WINDOW(window), host.canvas);
    gtk_window_present(GTK_WINDOW(window));
    host.scenario.start();
}

} // namespace

int main(int argc, char** argv) {
    Application host;
    g_signal_connect(host.application, "activate", G_CALLBACK(activate), &host);
    g_application_run(G_APPLICATION(host.application), argc, argv);
    return host.scenario.report();
}
