package com.vantu.ryn;

import java.awt.GraphicsEnvironment;
import javax.swing.JOptionPane;
import javax.swing.UIManager;

/** The only class that needs a desktop, so that it is loaded only when there is something to show. */
final class FailureBox {
    private FailureBox() {}

    static void show(String title, String text) {
        if (GraphicsEnvironment.isHeadless()) {
            return;
        }
        try {
            UIManager.setLookAndFeel(UIManager.getSystemLookAndFeelClassName());
        } catch (Exception e) {
            // Then it looks like Java.
        }
        JOptionPane.showMessageDialog(null, text, title, JOptionPane.ERROR_MESSAGE);
    }
}
